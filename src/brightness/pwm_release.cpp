#include "brightness/pwm_release.h"

#include <atomic>
#include <memory>
#include <new>
#include <utility>

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "brightness/restore_brightness.h"
#include "brightness/saved_brightness.h"
#include "win32/com_guards.h"
#include "win32/crash_stack.h"

// Owned by the release thread until `ended` is set, then by the window thread. Not freed if the process ends
// first.
struct PwmReleaseJob {
    SavedBrightness values;              // to restore; at the end, those that no display has accepted
    std::vector<std::wstring> restored;  // at the end, the names of the others
    HWND window = nullptr;
    HANDLE thread = nullptr;
    std::atomic<bool> ended = false;
};

namespace {

DWORD WINAPI ReleaseThread(void* context) {
    ReserveCrashStack();
    auto* release = static_cast<PwmReleaseJob*>(context);
    HWND window = release->window;
    {
        const MultithreadedApartment apartment;
        release->restored = RestoreBrightness(&release->values);
    }
    release->ended = true;
    // From now on the window thread may free the job. A request may have been deferred until the release
    // ends.
    PostMessageW(window, kMessagePwmSafeDeferred, 0, 0);
    return 0;
}

// Called on the window thread: Windows may terminate the process as soon as that thread has returned from
// WM_ENDSESSION, and an interrupted write of settings.ini loses the settings. Does nothing during an
// operation, because a display that is being locked may accept its 100 percent after the release.
void DeleteRestoredFromRecord(PwmReleaseJob* release) {
    if (!release->ended || g_app.pwmOperationRunning) return;
    DeleteRecordedBrightness(std::exchange(release->restored, {}));
}

}  // namespace

bool StartPwmSafeRelease() {
    if (!FinishPwmSafeRelease() || g_app.pwmSavedBrightness.empty()) return true;
    std::unique_ptr<PwmReleaseJob> release(new (std::nothrow) PwmReleaseJob);
    if (release == nullptr) return false;
    release->values = std::exchange(g_app.pwmSavedBrightness, {});
    release->window = g_app.mainWindow;
    release->thread = CreateThread(nullptr, 0, ReleaseThread, release.get(), 0, nullptr);
    if (release->thread == nullptr) {
        g_app.pwmSavedBrightness = std::move(release->values);
        return false;
    }
    g_app.pwmRelease = release.release();
    return true;
}

void WaitForPwmSafeRelease(DWORD timeoutMs) {
    if (g_app.pwmRelease == nullptr) return;
    WaitForSingleObject(g_app.pwmRelease->thread, timeoutMs);
    DeleteRestoredFromRecord(g_app.pwmRelease);
}

bool FinishPwmSafeRelease() {
    if (g_app.pwmRelease == nullptr) return true;
    if (!g_app.pwmRelease->ended) return false;
    const std::unique_ptr<PwmReleaseJob> release(std::exchange(g_app.pwmRelease, nullptr));
    DeleteRestoredFromRecord(release.get());
    // With the mode off the next lock reads the displays again, so these values are dropped.
    if (g_app.pwmSafe) {
        for (const auto& [name, percent] : release->values)
            g_app.pwmSavedBrightness.try_emplace(name, percent);
    }
    CloseHandle(release->thread);
    return true;
}
