#include "recorded_calls.h"

#include <cwchar>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "import_hook.h"
#include "measure.h"

namespace {

RecordedCalls* g_recording = nullptr;

// A handle is an argument whose type is a pointer to one of the handle types of Windows.
template <typename T>
constexpr bool kIsHandle =
    std::is_same_v<T, HDC> || std::is_same_v<T, HGDIOBJ> || std::is_same_v<T, HBRUSH> ||
    std::is_same_v<T, HPEN> || std::is_same_v<T, HRGN> || std::is_same_v<T, HBITMAP>;

template <typename T>
std::string BytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

// A recorded argument: Get returns what to pass when the call is made again.
template <typename T>
struct Argument {
    T value;
    int index = -1;  // of the call that returned the handle

    explicit Argument(T original) : value(original) {
        if constexpr (kIsHandle<T>) index = g_recording->IndexOf(original);
    }
    T Get(const std::vector<void*>& results) const {
        if constexpr (kIsHandle<T>) {
            if (index >= 0) return static_cast<T>(results[static_cast<std::size_t>(index)]);
        }
        return value;
    }
    std::string Bytes() const { return BytesOf(value); }
};

// An argument that points to one structure, of which the record keeps a copy.
template <typename T>
struct CopiedArgument {
    std::shared_ptr<T> copy;

    explicit CopiedArgument(const T* original) : copy(original != nullptr ? new T(*original) : nullptr) {}
    T* Get(const std::vector<void*>&) const { return copy.get(); }
    std::string Bytes() const { return copy != nullptr ? BytesOf(*copy) : std::string(); }
};

template <>
struct Argument<RECT*> : CopiedArgument<RECT> {
    using CopiedArgument::CopiedArgument;
};
template <>
struct Argument<const RECT*> : CopiedArgument<RECT> {
    using CopiedArgument::CopiedArgument;
};
template <>
struct Argument<SIZE*> : CopiedArgument<SIZE> {
    using CopiedArgument::CopiedArgument;
};

template <>
struct Argument<const wchar_t*> {
    std::wstring copy;

    explicit Argument(const wchar_t* original) : copy(original) {}
    const wchar_t* Get(const std::vector<void*>&) const { return copy.c_str(); }
    std::string Bytes() const { return {}; }
};

// BeginPaint fills the structure that EndPaint reads.
template <>
struct Argument<PAINTSTRUCT*> {
    PAINTSTRUCT* paint;

    explicit Argument(PAINTSTRUCT*) : paint(g_recording->Paint()) {}
    PAINTSTRUCT* Get(const std::vector<void*>&) const { return paint; }
    std::string Bytes() const { return {}; }
};
template <>
struct Argument<const PAINTSTRUCT*> : Argument<PAINTSTRUCT*> {
    explicit Argument(const PAINTSTRUCT*) : Argument<PAINTSTRUCT*>(nullptr) {}
};

template <typename R>
void* ResultOf(R result) {
    if constexpr (std::is_pointer_v<R>) {
        return result;
    } else {
        return nullptr;
    }
}

template <auto slot>
struct Hook;

template <typename R, typename... A, R (**slot)(A...)>
struct Hook<slot> {
    static inline R (*real)(A...) = nullptr;
    static inline const char* name = nullptr;

    static R Recorded(A... arguments) {
        if constexpr (std::is_void_v<R>) {
            real(arguments...);
            Remember(nullptr, arguments...);
        } else {
            const R result = real(arguments...);
            Remember(ResultOf(result), arguments...);
            return result;
        }
    }

    static void Remember(void* result, A... arguments) {
        std::tuple<Argument<A>...> kept{Argument<A>(arguments)...};
        const std::string bytes =
            std::apply([](const auto&... each) { return (each.Bytes() + ... + std::string()); }, kept);
        g_recording->Add(name, bytes, result, [kept](std::vector<void*>& results) {
            return std::apply(
                [&results](const auto&... each) -> void* {
                    if constexpr (std::is_void_v<R>) {
                        real(each.Get(results)...);
                        return nullptr;
                    } else {
                        return ResultOf(real(each.Get(results)...));
                    }
                },
                kept);
        });
    }

    static void Install(const char* function) {
        name = function;
        real = *slot;
        SetImport(slot, &Recorded);
    }
    static void Remove() { SetImport(slot, real); }
};

// Points to two vertices and one mesh, which the generic hook cannot know.
struct Gradient {
    TRIVERTEX corners[2];
    GRADIENT_RECT mesh;
};

}  // namespace

// Every function of user32 and gdi32 that the drawing code calls, except GdiGradientFill.
#define FOR_EACH_FUNCTION(use)                                                                           \
    use(BeginPaint) use(BitBlt) use(CreateCompatibleBitmap) use(CreateCompatibleDC) use(CreatePen)       \
        use(CreateRectRgn) use(CreateRoundRectRgn) use(CreateSolidBrush) use(DeleteDC) use(DeleteObject) \
            use(DrawIconEx) use(DrawTextW) use(Ellipse) use(EndPaint) use(FillRect) use(GetClientRect)   \
                use(GetClipRgn) use(GetStockObject) use(GetTextExtentPoint32W) use(IsWindowEnabled)      \
                    use(LineTo) use(MoveToEx) use(NotifyWinEvent) use(RoundRect) use(SelectClipRgn)      \
                        use(SelectObject) use(SetBkMode) use(SetDCBrushColor) use(SetMapMode)            \
                            use(SetTextColor) use(SetViewportExtEx) use(SetViewportOrgEx)                \
                                use(SetWindowExtEx)

#define DECLARE_IMPORT(function) extern "C" decltype(&function) __imp_##function;
FOR_EACH_FUNCTION(DECLARE_IMPORT)
DECLARE_IMPORT(GdiGradientFill)

namespace {

decltype(&GdiGradientFill) g_gradientFill;

BOOL WINAPI RecordedGradientFill(HDC dc, TRIVERTEX* corners, ULONG cornerCount, void* mesh, ULONG meshCount,
                                 ULONG mode) {
    const BOOL result = g_gradientFill(dc, corners, cornerCount, mesh, meshCount, mode);
    const Argument<HDC> target(dc);
    const Gradient kept = {{corners[0], corners[1]}, *static_cast<GRADIENT_RECT*>(mesh)};
    g_recording->Add("GdiGradientFill", {}, nullptr, [=](std::vector<void*>& results) mutable -> void* {
        Gradient gradient = kept;
        g_gradientFill(target.Get(results), gradient.corners, 2, &gradient.mesh, 1, mode);
        return nullptr;
    });
    return result;
}

void InstallHooks() {
#define INSTALL(function) Hook<&__imp_##function>::Install(#function);
    FOR_EACH_FUNCTION(INSTALL)
    g_gradientFill = __imp_GdiGradientFill;
    SetImport(&__imp_GdiGradientFill, &RecordedGradientFill);
}

void RemoveHooks() {
#define REMOVE(function) Hook<&__imp_##function>::Remove();
    FOR_EACH_FUNCTION(REMOVE)
    SetImport(&__imp_GdiGradientFill, g_gradientFill);
}

}  // namespace

void RecordedCalls::Record(const std::function<void()>& work) {
    *this = RecordedCalls();
    g_recording = this;
    InstallHooks();
    work();
    RemoveHooks();
    g_recording = nullptr;
}

void RecordedCalls::Replay() {
    for (std::size_t i = 0; i < calls_.size(); ++i)
        results_[i] = calls_[i](results_);
}

std::map<std::string, double> RecordedCalls::ReplayTimed() {
    std::map<std::string, double> times;
    for (std::size_t i = 0; i < calls_.size(); ++i) {
        const double start = Microseconds();
        results_[i] = calls_[i](results_);
        times[names_[i]] += Microseconds() - start;
    }
    return times;
}

void RecordedCalls::Add(const char* name, const std::string& arguments, void* result, Call call) {
    if (result != nullptr) latest_[result] = static_cast<int>(calls_.size());
    calls_.push_back(std::move(call));
    names_.push_back(name);
    results_.push_back(result);
    if (std::string(name).rfind("Create", 0) != 0) return;
    created_ += 1;
    creations_[name + (" " + arguments)] += 1;
}

int RecordedCalls::IndexOf(const void* handle) const {
    const auto found = latest_.find(handle);
    return handle != nullptr && found != latest_.end() ? found->second : -1;
}

std::map<std::string, int> RecordedCalls::MadeAgain() const {
    std::map<std::string, int> again;
    for (const auto& [creation, count] : creations_) {
        if (count > 1) again[creation.substr(0, creation.find(' '))] += count - 1;
    }
    return again;
}
