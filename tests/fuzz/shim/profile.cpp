// Windows' private-profile functions over one file in memory.
#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <list>
#include <string>
#include <string_view>

#include "shim.h"

namespace {

struct Key {
    std::wstring name;
    std::wstring value;
};

struct Section {
    std::wstring name;
    std::list<Key> keys;
};

std::list<Section> g_sections;

bool Same(const std::wstring& one, const wchar_t* other) {
    return _wcsicmp(one.c_str(), other) == 0;
}

Section* Find(const wchar_t* name) {
    for (Section& section : g_sections) {
        if (Same(section.name, name)) return &section;
    }
    return nullptr;
}

std::wstring_view Trimmed(std::wstring_view text) {
    constexpr wchar_t kBlanks[] = L" \t\r";
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::wstring_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

std::wstring Unquoted(std::wstring_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == L'"' || value.front() == L'\'');
    return std::wstring(quoted ? value.substr(1, value.size() - 2) : value);
}

void AddLine(std::wstring_view line) {
    line = Trimmed(line);
    if (!line.empty() && line.front() == L'[') {
        g_sections.push_back({std::wstring(line.substr(1, line.find(L']') - 1)), {}});
        return;
    }
    const std::size_t equals = line.find(L'=');
    if (g_sections.empty() || equals == std::wstring_view::npos || line.front() == L';') return;
    g_sections.back().keys.push_back(
        {std::wstring(Trimmed(line.substr(0, equals))), std::wstring(Trimmed(line.substr(equals + 1)))});
}

// Copies `text` with a terminating zero, cut to the capacity. Returns the length.
DWORD Return(std::wstring_view text, wchar_t* out, DWORD capacity) {
    const std::size_t length = std::min<std::size_t>(text.size(), capacity - 1);
    text.copy(out, length);
    out[length] = 0;
    return static_cast<DWORD>(length);
}

// Texts that end with a zero each, and with another one after the last. Cut, they end with two zeros.
DWORD ReturnList(const std::wstring& list, wchar_t* out, DWORD capacity) {
    if (list.size() + 1 <= capacity) {
        std::copy_n(list.c_str(), list.size() + 1, out);
        return static_cast<DWORD>(list.size());
    }
    std::copy_n(list.c_str(), capacity - 2, out);
    out[capacity - 2] = out[capacity - 1] = 0;
    return capacity - 2;
}

}  // namespace

void SetProfile(const std::wstring& text) {
    g_sections.clear();
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        // A zero ends the text for the functions that read it.
        AddLine(
            std::wstring_view(text).substr(start, end - start).substr(0, text.find(L'\0', start) - start));
        start = end + 1;
    }
}

bool HasProfileSection(const wchar_t* section) {
    return Find(section) != nullptr;
}

DWORD GetPrivateProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* fallback,
                               wchar_t* text, DWORD capacity, const wchar_t*) {
    const Section* const found = Find(section);
    if (key == nullptr) {
        std::wstring names;
        if (found != nullptr) {
            for (const Key& each : found->keys)
                names += each.name + L'\0';
        }
        return ReturnList(names, text, capacity);
    }
    if (found != nullptr) {
        for (const Key& each : found->keys) {
            if (Same(each.name, key)) return Return(Unquoted(each.value), text, capacity);
        }
    }
    return Return(fallback, text, capacity);
}

UINT GetPrivateProfileIntW(const wchar_t* section, const wchar_t* key, int fallback, const wchar_t* path) {
    wchar_t text[32];
    if (GetPrivateProfileStringW(section, key, L"", text, std::size(text), path) == 0) {
        return static_cast<UINT>(fallback);
    }
    const bool negative = text[0] == L'-';
    UINT value = 0;
    for (const wchar_t* digit = text + negative; *digit >= L'0' && *digit <= L'9'; ++digit)
        value = value * 10 + static_cast<UINT>(*digit - L'0');
    return negative ? 0 - value : value;
}

DWORD GetPrivateProfileSectionNamesW(wchar_t* names, DWORD capacity, const wchar_t*) {
    std::wstring list;
    for (const Section& section : g_sections)
        list += section.name + L'\0';
    return ReturnList(list, names, capacity);
}

BOOL WritePrivateProfileStringW(const wchar_t* section, const wchar_t* key, const wchar_t* value,
                                const wchar_t*) {
    if (key == nullptr) {
        g_sections.remove_if([section](const Section& each) { return Same(each.name, section); });
        return TRUE;
    }
    Section* found = Find(section);
    if (found == nullptr) found = &g_sections.emplace_back(Section{section, {}});
    const auto place = std::find_if(found->keys.begin(), found->keys.end(),
                                    [key](const Key& each) { return Same(each.name, key); });
    if (value == nullptr) {
        if (place != found->keys.end()) found->keys.erase(place);
    } else if (place != found->keys.end()) {
        place->value = Trimmed(value);
    } else {
        found->keys.push_back({key, std::wstring(Trimmed(value))});
    }
    return TRUE;
}
