#include "support/seam.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace seams {

namespace {

constexpr std::size_t kJumpSize = 5;  // jmp rel32

struct UsedSet {
    std::string_view file;
    const char* const* setFile;
};

// Constructors of any file fill them, so they are created on first use.
std::vector<Seam*>& Seams() {
    static std::vector<Seam*> seams;
    return seams;
}

std::vector<UsedSet>& Uses() {
    static std::vector<UsedSet> uses;
    return uses;
}

// The file itself, the sets that it uses and the sets that those use.
std::set<std::string_view> UsedFiles(std::string_view file) {
    std::set<std::string_view> files = {file};
    for (bool grows = true; grows;) {
        grows = false;
        for (const UsedSet& use : Uses()) {
            if (files.count(use.file) != 0 && files.insert(*use.setFile).second) grows = true;
        }
    }
    return files;
}

std::vector<Seam*> UsedSeams(std::string_view file) {
    const std::set<std::string_view> files = UsedFiles(file);
    std::vector<Seam*> chosen;
    for (Seam* seam : Seams()) {
        if (files.count(seam->file) != 0) chosen.push_back(seam);
    }
    return chosen;
}

const unsigned char* ImageBase() {
    return reinterpret_cast<const unsigned char*>(GetModuleHandleW(nullptr));
}

const IMAGE_OPTIONAL_HEADER& ImageHeader() {
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(ImageBase());
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(ImageBase() + dos->e_lfanew)->OptionalHeader;
}

bool IsInside(const void* address, const void* start, std::size_t size) {
    const auto* at = static_cast<const unsigned char*>(address);
    const auto* first = static_cast<const unsigned char*>(start);
    return at >= first && at < first + size;
}

bool IsImportPointer(const void* address) {
    const IMAGE_DATA_DIRECTORY& table = ImageHeader().DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    return IsInside(address, ImageBase() + table.VirtualAddress, table.Size);
}

// A leaf function may lack an entry in the function table; its length is then unknown.
bool HasRoomForJump(void* code) {
    DWORD64 image = 0;
    const auto address = reinterpret_cast<DWORD64>(code);
    const RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(address, &image, nullptr);
    return function != nullptr && image + function->BeginAddress == address &&
           function->EndAddress - function->BeginAddress >= kJumpSize;
}

std::size_t SizeOf(SeamKind kind) {
    return kind == SeamKind::kImportPointer ? sizeof(void*) : kJumpSize;
}

[[noreturn]] void Fail(const char* what, const char* name) {
    std::fprintf(stderr, "seam of %s: %s\n", name, what);
    std::fflush(stderr);
    std::_Exit(1);
}

void WriteBytes(const Seam& seam, const unsigned char* bytes) {
    const std::size_t size = SizeOf(seam.kind);
    const DWORD access = seam.kind == SeamKind::kImportPointer ? PAGE_READWRITE : PAGE_EXECUTE_READWRITE;
    DWORD before = 0;
    if (!VirtualProtect(seam.target, size, access, &before)) Fail("cannot be written to", seam.name);
    std::memcpy(seam.target, bytes, size);
    if (!VirtualProtect(seam.target, size, before, &before)) Fail("cannot be protected again", seam.name);
    if (seam.kind == SeamKind::kCode) FlushInstructionCache(GetCurrentProcess(), seam.target, size);
}

void Activate(Seam* seam) {
    std::memcpy(seam->saved, seam->target, SizeOf(seam->kind));
    unsigned char bytes[sizeof(void*)] = {};
    if (seam->kind == SeamKind::kImportPointer) {
        std::memcpy(bytes, &seam->replacement, sizeof(seam->replacement));
    } else {
        // Both lie in the program's image, which is far smaller than a jump reaches.
        const auto distance = static_cast<std::int32_t>(static_cast<unsigned char*>(seam->replacement) -
                                                        static_cast<unsigned char*>(seam->target) -
                                                        static_cast<std::ptrdiff_t>(kJumpSize));
        bytes[0] = 0xE9;
        std::memcpy(bytes + 1, &distance, sizeof(distance));
    }
    WriteBytes(*seam, bytes);
    seam->active = true;
}

void Deactivate(Seam* seam) {
    WriteBytes(*seam, seam->saved);
    seam->active = false;
}

bool VerifySeam(const Seam& seam) {
    const char* problem = nullptr;
    if (seam.kind == SeamKind::kImportPointer) {
        if (!IsImportPointer(seam.target)) problem = "is not imported by this program";
    } else if (!HasRoomForJump(seam.target)) {
        problem = "has no room for a jump";
    }
    if (problem != nullptr) std::fprintf(stderr, "%s: %s %s\n", seam.file, seam.name, problem);
    return problem == nullptr;
}

bool VerifyFile(std::string_view file) {
    std::map<const void*, const Seam*> taken;
    bool good = true;
    for (const Seam* seam : UsedSeams(file)) {
        const auto [other, isFirst] = taken.emplace(seam->target, seam);
        if (isFirst) continue;
        std::fprintf(stderr, "%s: %s has two fakes, in %s and in %s\n", std::string(file).c_str(), seam->name,
                     other->second->file, seam->file);
        good = false;
    }
    return good;
}

}  // namespace

Seam::Seam(const char* sourceFile, const char* functionName, SeamKind what, void* where, void* function,
           void* fake)
    : file(sourceFile), name(functionName), kind(what), target(where), address(function), replacement(fake) {
    Seams().push_back(this);
}

Use::Use(const char* file, const char* const* setFile) {
    Uses().push_back({file, setFile});
}

bool Verify() {
    bool good = true;
    std::set<std::string_view> files;
    for (const Seam* seam : Seams()) {
        good &= VerifySeam(*seam);
        files.insert(seam->file);
    }
    for (const UsedSet& use : Uses())
        files.insert(use.file);
    for (const std::string_view file : files)
        good &= VerifyFile(file);
    return good;
}

void Install(const char* file) {
    for (Seam* seam : UsedSeams(file))
        Activate(seam);
}

void Remove() {
    for (Seam* seam : Seams()) {
        if (seam->active) Deactivate(seam);
    }
}

void* RealAddress(void* current) {
    for (const Seam* seam : Seams()) {
        if (!seam->active || seam->kind != SeamKind::kImportPointer) continue;
        if (current != seam->replacement && current != seam->address) continue;
        void* original = nullptr;
        std::memcpy(&original, seam->saved, sizeof(original));
        return original;
    }
    // A function of a DLL whose seam is not installed. An address in the program's image would lead to the
    // fake again.
    if (IsInside(current, ImageBase(), ImageHeader().SizeOfImage)) Fail("has no real function", "an address");
    return current;
}

}  // namespace seams
