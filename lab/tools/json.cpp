#include "json.h"

#include <cwchar>

#include "tool.h"

namespace {

constexpr wchar_t kFirstPrintable = L' ';

std::wstring Quote(const std::wstring& value) {
    std::wstring quoted = L"\"";
    for (const wchar_t letter : value) {
        if (letter == L'"' || letter == L'\\') {
            quoted += L'\\';
            quoted += letter;
        } else if (letter < kFirstPrintable) {
            wchar_t code[8] = {};
            std::swprintf(code, std::size(code), L"\\u%04x", static_cast<unsigned>(letter));
            quoted += code;
        } else {
            quoted += letter;
        }
    }
    return quoted + L'"';
}

void SkipSpaces(const std::wstring& text, size_t& position) {
    while (position < text.size() && text[position] == L' ') {
        ++position;
    }
}

bool Take(const std::wstring& text, size_t& position, wchar_t letter) {
    SkipSpaces(text, position);
    if (position >= text.size() || text[position] != letter) {
        return false;
    }
    ++position;
    return true;
}

// The character that the escape sequence after a backslash represents.
wchar_t ReadEscape(const std::wstring& text, size_t& position) {
    const wchar_t letter = text[position++];
    switch (letter) {
        case L'b': return L'\b';
        case L'f': return L'\f';
        case L'n': return L'\n';
        case L'r': return L'\r';
        case L't': return L'\t';
        case L'u': {
            const std::wstring code = text.substr(position, 4);
            position += code.size();
            return static_cast<wchar_t>(std::wcstoul(code.c_str(), nullptr, 16));
        }
        default: return letter;
    }
}

bool ReadString(const std::wstring& text, size_t& position, std::wstring& value) {
    if (!Take(text, position, L'"')) {
        return false;
    }
    while (position < text.size() && text[position] != L'"') {
        const wchar_t letter = text[position++];
        if (letter == L'\\' && position < text.size()) {
            value += ReadEscape(text, position);
        } else {
            value += letter;
        }
    }
    return Take(text, position, L'"');
}

}  // namespace

Json::Json(const std::wstring& value) : text(ToUtf8(Quote(value))) {}

Json::Json(const wchar_t* value) : Json(std::wstring(value)) {}

Json JsonObject(const std::vector<JsonField>& fields) {
    Json object;
    object.text = "{";
    for (const JsonField& field : fields) {
        object.text += (object.text.size() > 1 ? ",\"" : "\"") + std::string(field.name) + "\":";
        object.text += field.value.text;
    }
    object.text += '}';
    return object;
}

Json JsonArray(const std::vector<Json>& values) {
    Json array;
    array.text = "[";
    for (const Json& value : values) {
        array.text += (array.text.size() > 1 ? "," : "") + value.text;
    }
    array.text += ']';
    return array;
}

bool ReadJsonStrings(const std::wstring& text, std::vector<std::wstring>& strings) {
    size_t position = 0;
    if (!Take(text, position, L'[')) {
        return false;
    }
    do {
        std::wstring value;
        if (!ReadString(text, position, value)) {
            return false;
        }
        strings.push_back(value);
    } while (Take(text, position, L','));
    return Take(text, position, L']');
}
