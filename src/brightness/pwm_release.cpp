#include "brightness/pwm_release.h"

#include <atomic>
#include <memory>
#include <new>
#include <utility>

#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "brightness/display_targets.h"
#include "win32/com_guards.h"

// Belongs to the thread until `ended` is set, then to the window's thread. It is not freed when the process
// ends first.
struct PwmReleaseJob {
    SavedBrightness values;  // to restore; in the end those that no display accepted
    HWND window = nullptr;
    HANDLE thread = nullptr;
    std::atomic<bool> ended = false;
};

namespace {

DWORD WINAPI RunRelease(void* context) {
    auto* release = static_cast<PwmReleaseJob*>(context);
    HWND window = release->window;
    {
        const MultithreadedApartment apartment;
        RestoreBrightness(&release->values);
    }
    release->ended = true;
    // From here on the window's thread may free the release. A request may be waiting for its end.
    PostMessageW(window, kMessagePwmSafeDeferred, 0, 0);
    return 0;
}

}  // namespace

void RestoreBrightness(SavedBrightness* saved) {
    SavedBrightness taken;
    SavedBrightness refused;
    DisplayTargetList list;
    EnumerateTargets(&list);
    for (const DisplayTarget& target : list) {
        taken.insert(saved->extract(target.name));
        const auto entry = taken.find(target.name);  // two targets may have one name
        if (entry != taken.end() && !SetTargetBrightness(target, entry->second)) refused.insert(*entry);
    }
    saved->merge(refused);
}

bool StartPwmSafeRelease() {
    if (!FinishPwmSafeRelease() || g_app.pwmSavedBrightness.empty()) return true;
    std::unique_ptr<PwmReleaseJob> release(new (std::nothrow) PwmReleaseJob);
    if (release == nullptr) return false;
    release->values = std::exchange(g_app.pwmSavedBrightness, {});
    release->window = g_app.mainWindow;
    release->thread = CreateThread(nullptr, 0, RunRelease, release.get(), 0, nullptr);
    if (release->thread == nullptr) {
        g_app.pwmSavedBrightness = std::move(release->values);
        return false;
    }
    g_app.pwmRelease = release.release();
    return true;
}

void WaitForPwmSafeRelease(DWORD limit) {
    if (g_app.pwmRelease != nullptr) WaitForSingleObject(g_app.pwmRelease->thread, limit);
}

bool FinishPwmSafeRelease() {
    if (g_app.pwmRelease == nullptr) return true;
    if (!g_app.pwmRelease->ended) return false;
    const std::unique_ptr<PwmReleaseJob> release(std::exchange(g_app.pwmRelease, nullptr));
    for (const auto& [name, percent] : release->values)
        g_app.pwmSavedBrightness.try_emplace(name, percent);
    CloseHandle(release->thread);
    return true;
}
