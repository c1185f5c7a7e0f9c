#pragma once

#include <concepts>
#include <initializer_list>
#include <string>
#include <vector>

// A JSON value as text: null, a number, a string, or a result of JsonObject or JsonArray.
struct Json {
    std::string text = "null";

    Json() = default;
    Json(const std::wstring& value);
    Json(const wchar_t* value);
    template <std::integral Number>
    Json(Number value) : text(std::to_string(value)) {}
};

struct JsonField {
    const char* name;
    Json value;
};

Json JsonObject(const std::vector<JsonField>& fields);
Json JsonArray(const std::vector<Json>& values);

// Reads one array of strings such as ["a", "b"]. False if the text is anything else.
bool ReadJsonStrings(const std::wstring& text, std::vector<std::wstring>& strings);
