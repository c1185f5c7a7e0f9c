#include "tool.h"

#include <cstdio>

namespace {

struct KeyPath {
    HKEY root;
    std::wstring path;
};

KeyPath ParseKey(const std::wstring& text) {
    const size_t separator = text.find(L'\\');
    const std::wstring root = text.substr(0, separator);
    const std::wstring path = separator == std::wstring::npos ? L"" : text.substr(separator + 1);
    return {root == L"HKLM"   ? HKEY_LOCAL_MACHINE
            : root == L"HKCR" ? HKEY_CLASSES_ROOT
                              : HKEY_CURRENT_USER,
            path};
}

std::wstring HexDigits(const BYTE* data, size_t size) {
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    std::wstring digits;
    for (size_t i = 0; i < size; ++i) {
        digits += kDigits[data[i] >> 4];
        digits += kDigits[data[i] & 0xF];
    }
    return digits;
}

std::vector<BYTE> ParseHex(const std::wstring& text) {
    std::vector<BYTE> bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<BYTE>(std::wcstoul(text.substr(i, 2).c_str(), nullptr, 16)));
    }
    return bytes;
}

}  // namespace

// registry-get KEY NAME: type, size, the data as hexadecimal digits (hex), and text for a string or value for
// a 32-bit number.
int RegistryGet(const Arguments& arguments, Json& answer) {
    const KeyPath key = ParseKey(arguments[0]);
    std::vector<BYTE> data(65536);
    DWORD size = static_cast<DWORD>(data.size() - sizeof(wchar_t));
    DWORD type = 0;
    if (RegGetValueW(key.root, key.path.c_str(), arguments[1].c_str(), RRF_RT_ANY | RRF_NOEXPAND, &type,
                     data.data(), &size) != ERROR_SUCCESS) {
        return kToolNotFound;
    }
    std::vector<JsonField> found = {{"type", type}, {"size", size}, {"hex", HexDigits(data.data(), size)}};
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        found.push_back({"text", reinterpret_cast<const wchar_t*>(data.data())});
    } else if (type == REG_DWORD) {
        found.push_back({"value", *reinterpret_cast<const DWORD*>(data.data())});
    }
    answer = JsonObject(found);
    return kToolOk;
}

// registry-set KEY NAME sz|dword|hex:TYPE VALUE: creates the key if it does not exist.
int RegistrySet(const Arguments& arguments, Json&) {
    const KeyPath key = ParseKey(arguments[0]);
    const std::wstring& kind = arguments[2];
    const std::wstring& value = arguments[3];
    std::vector<BYTE> data;
    DWORD type = REG_SZ;
    if (kind == L"dword") {
        type = REG_DWORD;
        const DWORD number = static_cast<DWORD>(Number(value));
        const BYTE* const bytes = reinterpret_cast<const BYTE*>(&number);
        data.assign(bytes, bytes + sizeof(number));
    } else if (kind.starts_with(L"hex:")) {
        type = static_cast<DWORD>(Number(kind.substr(4)));
        data = ParseHex(value);
    } else {
        const BYTE* const bytes = reinterpret_cast<const BYTE*>(value.c_str());
        data.assign(bytes, bytes + (value.size() + 1) * sizeof(wchar_t));
    }
    const LSTATUS status = RegSetKeyValueW(key.root, key.path.c_str(), arguments[1].c_str(), type,
                                           data.data(), static_cast<DWORD>(data.size()));
    return status == ERROR_SUCCESS ? kToolOk : kToolFailed;
}

// registry-delete KEY [NAME]: deletes the value, or the key with all its subkeys.
int RegistryDelete(const Arguments& arguments, Json&) {
    const KeyPath key = ParseKey(arguments[0]);
    const LSTATUS status = arguments.size() > 1
                               ? RegDeleteKeyValueW(key.root, key.path.c_str(), arguments[1].c_str())
                               : RegDeleteTreeW(key.root, key.path.c_str());
    return status == ERROR_SUCCESS ? kToolOk : kToolNotFound;
}
