// The C library's functions for wide text, for 16-bit characters: glibc's take 32 bits. The C++ library's
// std::wstring calls them too, so it is instantiated in this program (_GLIBCXX_EXTERN_TEMPLATE=0).
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

namespace {

wchar_t Lower(wchar_t unit) {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + (L'a' - L'A')) : unit;
}

bool IsOneOf(wchar_t unit, const char* characters) {
    return unit != 0 && unit < 0x7F && std::strchr(characters, static_cast<char>(unit)) != nullptr;
}

std::wstring Widened(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

// A number as the narrow formatter writes it. `long` has 32 bits on Windows.
template <typename Value>
std::wstring Number(const std::string& flags, const char* length, char conversion, Value value) {
    char text[512];
    const std::string format = "%" + flags + length + conversion;
    std::snprintf(text, sizeof(text), format.c_str(), value);
    return Widened(text);
}

// printf for the conversions that the program uses: d u x X c f, and %ls.
std::wstring Formatted(const wchar_t* format, va_list arguments) {
    std::wstring text;
    while (*format != 0) {
        if (*format != L'%') {
            text += *format++;
            continue;
        }
        ++format;
        std::string flags;
        while (IsOneOf(*format, "0123456789.-+ #"))
            flags += static_cast<char>(*format++);
        bool isLong = false;
        bool is64 = false;
        for (; IsOneOf(*format, "lz"); ++format) {
            is64 = is64 || *format == L'z' || isLong;
            isLong = true;
        }
        const char conversion = static_cast<char>(*format++);
        switch (conversion) {
            case '%': text += L'%'; break;
            case 's': text += va_arg(arguments, const wchar_t*); break;
            case 'f': text += Number(flags, "", 'f', va_arg(arguments, double)); break;
            case 'd':
                text += is64 ? Number(flags, "ll", 'd', va_arg(arguments, long long))
                             : Number(flags, "", 'd', va_arg(arguments, int));
                break;
            case 'u':
            case 'x':
            case 'X':
                text += is64 ? Number(flags, "ll", conversion, va_arg(arguments, unsigned long long))
                             : Number(flags, "", conversion, va_arg(arguments, unsigned));
                break;
            default: std::abort();  // a conversion that this formatter must learn
        }
    }
    return text;
}

}  // namespace

extern "C" {

std::size_t wcslen(const wchar_t* text) {
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    return length;
}

wchar_t* wmemcpy(wchar_t* to, const wchar_t* from, std::size_t count) {
    return static_cast<wchar_t*>(std::memcpy(to, from, count * sizeof(wchar_t)));
}

wchar_t* wmemmove(wchar_t* to, const wchar_t* from, std::size_t count) {
    return static_cast<wchar_t*>(std::memmove(to, from, count * sizeof(wchar_t)));
}

wchar_t* wmemset(wchar_t* to, wchar_t unit, std::size_t count) {
    std::fill_n(to, count, unit);
    return to;
}

int wmemcmp(const wchar_t* one, const wchar_t* other, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (one[i] != other[i]) return one[i] < other[i] ? -1 : 1;
    }
    return 0;
}

int wcscmp(const wchar_t* one, const wchar_t* other) {
    for (; *one == *other; ++one, ++other) {
        if (*one == 0) return 0;
    }
    return *one < *other ? -1 : 1;
}

unsigned long long wcstoull(const wchar_t* text, wchar_t** end, int base) {
    const std::wstring_view all(text);
    std::string narrow;
    for (const wchar_t unit : all)
        narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
    char* narrowEnd = nullptr;
    const unsigned long long value = std::strtoull(narrow.c_str(), &narrowEnd, base);
    if (end != nullptr) *end = const_cast<wchar_t*>(text) + (narrowEnd - narrow.c_str());
    return value;
}

// std::to_wstring calls it.
int vswprintf(wchar_t* buffer, std::size_t capacity, const wchar_t* format, va_list arguments) {
    const std::wstring text = Formatted(format, arguments);
    if (text.size() >= capacity) return -1;
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return static_cast<int>(text.size());
}

}  // extern "C"

// The overload set of <cwchar> needs these in C++.
wchar_t* FindUnit(wchar_t* text, wchar_t unit, std::size_t count) {
    wchar_t* const found = std::find(text, text + count, unit);
    return found != text + count ? found : nullptr;
}

extern "C" wchar_t* ShimWmemchr(const wchar_t* text, wchar_t unit, std::size_t count) __asm__("wmemchr");
extern "C" wchar_t* ShimWmemchr(const wchar_t* text, wchar_t unit, std::size_t count) {
    return FindUnit(const_cast<wchar_t*>(text), unit, count);
}

int _vsnwprintf_s(wchar_t* buffer, std::size_t capacity, std::size_t, const wchar_t* format,
                  va_list arguments) {
    const std::wstring text = Formatted(format, arguments);
    const std::size_t length = std::min(text.size(), capacity - 1);
    std::copy_n(text.data(), length, buffer);
    buffer[length] = 0;
    return length == text.size() ? static_cast<int>(length) : -1;
}

int _wcsicmp(const wchar_t* one, const wchar_t* other) {
    for (; Lower(*one) == Lower(*other); ++one, ++other) {
        if (*one == 0) return 0;
    }
    return Lower(*one) < Lower(*other) ? -1 : 1;
}
