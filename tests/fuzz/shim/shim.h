// The state of the stand-ins for Windows, which the fuzz targets set and read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The real path of the file that the program knows by `path`.
std::string FilePath(const wchar_t* path);

// The contents of settings.ini from now on, as text. Windows' rules: names ignore case, the first of two
// equal keys counts, blanks around names and values and one pair of quotation marks around a value are
// removed.
void SetProfile(const std::wstring& text);
bool HasProfileSection(const wchar_t* section);

// The next answers of the registry, in turn. After the last one every value is missing.
struct RegistryAnswer {
    std::uint32_t type = 0;
    std::string data;
};
void SetRegistry(std::vector<RegistryAnswer> answers);
