// A paint of each panel; bench_painting profile also prints where its time goes. Why the floor is not
// lower: the design prescribes every shape of the panel, each shape is one call, and a device context has no
// memory for two colours. The floor repeats the recorded calls, so the ratio shows what the program adds to
// them; their number is a separate figure.
#include <cmath>

#include "app/state/app_state.h"
#include "bench_window.h"
#include "measure.h"
#include "recorded_calls.h"

namespace {

constexpr double kLimitAt192 = 2000.0;  // us, from BeginPaint until the picture has been transferred

std::function<void()> g_replacePaint;
bool g_profile = false;

std::string Label(const char* panel, UINT dpi) {
    return std::string(panel) + " panel at " + std::to_string(dpi) + " DPI";
}

void PrintCount(const std::string& name, double count, double goal = kNoGoal) {
    PrintFigure({name, goal, "", true}, {count});
}

void PrintCalls(const RecordedCalls& calls, const char* panel) {
    const std::string frame = std::string(" in a frame of the ") + panel + " panel";
    PrintCount("calls to GDI and user32" + frame, static_cast<double>(calls.Count()));
    PrintCount("GDI objects created" + frame, calls.Created());
    double again = 0;
    for (const auto& [function, count] : calls.MadeAgain()) {
        std::fprintf(stderr, "%s: %s with the same arguments, %d more\n", panel, function.c_str(), count);
        again += count;
    }
    PrintCount("GDI objects created again" + frame, again, 0.0);
}

// Where the time of a frame goes, on standard error: the median of each function's time in a frame.
void PrintProfile(RecordedCalls* calls, const std::string& label) {
    constexpr int kFrames = 41;
    std::map<std::string, std::vector<double>> times;
    g_replacePaint = [calls, &times] {
        for (const auto& [function, time] : calls->ReplayTimed())
            times[function].push_back(time);
    };
    for (int i = 0; i < kFrames; ++i)
        PaintNow();
    g_replacePaint = nullptr;
    for (const auto& [function, samples] : times) {
        const double median = Median(samples);
        if (median > 10.0) std::fprintf(stderr, "%s: %s %.0f us\n", label.c_str(), function.c_str(), median);
    }
}

void MeasurePanel(Panel panel, const char* name, UINT dpi) {
    g_app.panel = panel;
    PaintNow();
    RecordedCalls calls;
    calls.Record(PaintNow);
    RecordedCalls* recorded = &calls;
    const auto paint = [](int) {
        PaintNow();
        GdiFlush();
    };
    const auto replay = [recorded](int) {
        g_replacePaint = [recorded] { recorded->Replay(); };
        PaintNow();
        GdiFlush();
        g_replacePaint = nullptr;
    };
    const std::vector<double> times = Compare({"paint: " + Label(name, dpi), 1.10}, paint, replay);
    if (dpi == 192) PrintFigure({"paint: " + Label(name, dpi) + ", absolute", kLimitAt192}, times);
    if (dpi == 96) PrintCalls(calls, name);
    if (g_profile) PrintProfile(&calls, Label(name, dpi));
}

}  // namespace

int main(int count, char** words) {
    g_profile = count > 1 && std::string(words[1]) == "profile";
    SetProcessDPIAware();
    g_app.filterOn = true;
    for (const UINT dpi : {96U, 144U, 192U}) {
        CreateBenchPopup(dpi, &g_replacePaint);
        MeasurePanel(Panel::Main, "main", dpi);
        MeasurePanel(Panel::Settings, "settings", dpi);
        DestroyBenchPopup();
    }
    return 0;
}
