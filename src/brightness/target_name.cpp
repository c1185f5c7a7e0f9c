#include "brightness/target_name.h"

#include <cwchar>
#include <iterator>

namespace {

constexpr wchar_t kPrefix[] = L"DXVA2:";
constexpr wchar_t kIndexMark = L'#';

}  // namespace

std::wstring DdcTargetName(const wchar_t* device, std::uint32_t index) {
    const std::wstring shown = device[0] != L'\0' ? device : L"UNKNOWN";
    return kPrefix + shown + kIndexMark + std::to_wstring(index);
}

bool IsDdcTargetName(const std::wstring& name) {
    return name.starts_with(kPrefix);
}

bool ParseDdcTargetName(const std::wstring& name, std::wstring* device, std::uint32_t* index) {
    const std::size_t prefix = std::size(kPrefix) - 1;
    const std::size_t mark = name.rfind(kIndexMark);
    if (!IsDdcTargetName(name) || mark == std::wstring::npos) return false;
    *device = name.substr(prefix, mark - prefix);
    *index = static_cast<std::uint32_t>(std::wcstoul(name.c_str() + mark + 1, nullptr, 10));
    return true;
}
