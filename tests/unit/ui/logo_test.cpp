// The logo through the real imaging component. This test program contains the shipped resources.
#include "ui/logo.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "support/seam.h"

namespace {

struct Blend {
    int x, y, width, height;
    int sourceX, sourceY, sourceWidth, sourceHeight;
    int operation, flags, constantAlpha, format;
    bool logoSelected;
    int stretchMode;

    bool operator==(const Blend&) const = default;
};

std::vector<Blend> g_blends;
int g_stretchMode = 0;
int g_factories = 0;
int g_dibs = 0;
int g_contexts = 0;
int g_blocks = 0;
std::vector<HGDIOBJ> g_deleted;

// The calls that fail.
bool g_noResource = false;
bool g_noStream = false;
bool g_noDib = false;
bool g_noPixels = false;
bool g_noBlock = false;
DWORD g_resourceSize = 0xFFFFFFFF;  // 0xFFFFFFFF: as it is

HRESULT WINAPI FakeCoCreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD context, REFIID iid,
                                    LPVOID* out) {
    ++g_factories;
    const auto real = Real(&CoCreateInstance);
    return real(classId, outer, context, iid, out);
}

HRESULT WINAPI FakeCreateStreamOnHGlobal(HGLOBAL block, BOOL deleteOnRelease, LPSTREAM* stream) {
    EXPECT_TRUE(deleteOnRelease) << "the stream owns the block";
    EXPECT_NE(block, nullptr);
    if (g_noStream) return E_OUTOFMEMORY;
    --g_blocks;  // the stream's from now on
    const auto real = Real(&CreateStreamOnHGlobal);
    return real(block, deleteOnRelease, stream);
}

HGLOBAL WINAPI FakeGlobalAlloc(UINT flags, SIZE_T size) {
    EXPECT_TRUE((flags & GMEM_MOVEABLE) != 0);
    if (g_noBlock) return nullptr;
    ++g_blocks;
    const auto real = Real(&GlobalAlloc);
    return real(flags, size);
}

HGLOBAL WINAPI FakeGlobalFree(HGLOBAL block) {
    --g_blocks;
    const auto real = Real(&GlobalFree);
    return real(block);
}

HRSRC WINAPI FakeFindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
    EXPECT_EQ(module, g_app.instance);
    EXPECT_EQ(name, MAKEINTRESOURCEW(201));
    EXPECT_EQ(type, MAKEINTRESOURCEW(10));
    if (g_noResource) return nullptr;
    const auto real = Real(&FindResourceW);
    return real(module, name, type);
}

DWORD WINAPI FakeSizeofResource(HMODULE module, HRSRC resource) {
    const auto real = Real(&SizeofResource);
    return g_resourceSize != 0xFFFFFFFF ? g_resourceSize : real(module, resource);
}

HBITMAP WINAPI FakeCreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section,
                                    DWORD offset) {
    if (g_noDib) return nullptr;
    ++g_dibs;
    EXPECT_EQ(info->bmiHeader.biBitCount, 32);
    EXPECT_LT(info->bmiHeader.biHeight, 0) << "top-down";
    const auto real = Real(&CreateDIBSection);
    HBITMAP made = real(dc, info, usage, bits, section, offset);
    if (g_noPixels) *bits = nullptr;  // no buffer for the pixels
    return made;
}

BOOL WINAPI FakeDeleteObject(HGDIOBJ object) {
    g_deleted.push_back(object);
    if (GetObjectType(object) == OBJ_BITMAP) --g_dibs;
    const auto real = Real(&DeleteObject);
    return real(object);
}

HDC WINAPI FakeCreateCompatibleDC(HDC like) {
    ++g_contexts;
    const auto real = Real(&CreateCompatibleDC);
    return real(like);
}

BOOL WINAPI FakeDeleteDC(HDC dc) {
    --g_contexts;
    EXPECT_NE(GetCurrentObject(dc, OBJ_BITMAP), g_app.logoBitmap) << "the logo is deselected first";
    const auto real = Real(&DeleteDC);
    return real(dc);
}

int WINAPI FakeSetStretchBltMode(HDC, int mode) {
    g_stretchMode = mode;
    return BLACKONWHITE;
}

BOOL WINAPI FakeGdiAlphaBlend(HDC, int x, int y, int width, int height, HDC source, int sourceX, int sourceY,
                              int sourceWidth, int sourceHeight, BLENDFUNCTION blend) {
    g_blends.push_back({x, y, width, height, sourceX, sourceY, sourceWidth, sourceHeight, blend.BlendOp,
                        blend.BlendFlags, blend.SourceConstantAlpha, blend.AlphaFormat,
                        GetCurrentObject(source, OBJ_BITMAP) == g_app.logoBitmap, g_stretchMode});
    return TRUE;
}

// 3 x 2 pixels, RGBA: (255,0,0,255) (0,255,0,128) (9,8,7,255) / (0,0,255,0) (100,200,50,51) (0,0,0,255).
constexpr std::uint8_t kSmallPng[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48, 0x44, 0x52, 0x00,
    0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x02, 0x08, 0x06, 0x00, 0x00, 0x00, 0x9D, 0x74, 0x66, 0x1A, 0x00,
    0x00, 0x00, 0x1C, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9C, 0x63, 0xF8, 0xCF, 0xC0, 0xF0, 0x1F, 0x08, 0x1B,
    0x38, 0x39, 0xD8, 0x81, 0x4C, 0x20, 0x2B, 0xE5, 0x84, 0x91, 0x31, 0x88, 0x01, 0x00, 0x71, 0x03, 0x08,
    0x24, 0x68, 0x23, 0x6A, 0xC1, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

// 1 x 2 pixels, RGB without alpha: (10,20,30) / (40,50,60).
constexpr std::uint8_t kOpaquePng[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48, 0x44,
    0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02, 0x08, 0x02, 0x00, 0x00, 0x00, 0x16,
    0xE3, 0x21, 0x70, 0x00, 0x00, 0x00, 0x10, 0x49, 0x44, 0x41, 0x54, 0x78, 0x9C, 0x63, 0xE0,
    0x12, 0x91, 0x63, 0xD0, 0x30, 0xB2, 0x01, 0x00, 0x02, 0x74, 0x00, 0xD3, 0x7E, 0x4C, 0x63,
    0x1A, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

IStream* StreamOf(const std::uint8_t* bytes, std::size_t size) {
    IStream* stream = nullptr;
    CreateStreamOnHGlobal(GlobalAlloc(GMEM_MOVEABLE, 0), TRUE, &stream);
    stream->Write(bytes, static_cast<ULONG>(size), nullptr);
    stream->Seek({}, STREAM_SEEK_SET, nullptr);
    return stream;
}

struct Decoded {
    HBITMAP bitmap = nullptr;
    UINT width = 0;
    UINT height = 0;
};

Decoded Decode(const std::uint8_t* bytes, std::size_t size) {
    IStream* stream = StreamOf(bytes, size);
    Decoded decoded;
    decoded.bitmap = DecodePng(stream, &decoded.width, &decoded.height);
    EXPECT_EQ(stream->Release(), 0U) << "the decoder let go of the stream";
    return decoded;
}

// The pixels in memory order, each 0xAARRGGBB.
std::vector<std::uint32_t> PixelsOf(const Decoded& decoded) {
    DIBSECTION section = {};
    GetObjectW(decoded.bitmap, sizeof(section), &section);
    const auto* pixels = static_cast<const std::uint32_t*>(section.dsBm.bmBits);
    return {pixels, pixels + decoded.width * decoded.height};
}

class Logo : public testing::Test {
protected:
    void SetUp() override {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        g_app = AppState{};
        g_app.instance = GetModuleHandleW(nullptr);
        g_blends.clear();
        g_deleted.clear();
        g_stretchMode = g_factories = g_dibs = g_contexts = g_blocks = 0;
        g_noResource = g_noStream = g_noDib = g_noPixels = g_noBlock = false;
        g_resourceSize = 0xFFFFFFFF;
        screen = GetDC(nullptr);
    }

    void TearDown() override {
        FreeLogo();
        EXPECT_EQ(g_dibs, 0);
        EXPECT_EQ(g_contexts, 0);
        EXPECT_EQ(g_blocks, 0);
        ReleaseDC(nullptr, screen);
        CoUninitialize();
    }

    void ExpectNothingDrawn() {
        DrawLogo(screen, 100, 100, 64);
        EXPECT_TRUE(g_blends.empty());
        EXPECT_EQ(g_app.logoBitmap, nullptr);
    }

    HDC screen = nullptr;
};

}  // namespace

AMBREL_SEAM(CoCreateInstance, FakeCoCreateInstance);
AMBREL_SEAM(CreateStreamOnHGlobal, FakeCreateStreamOnHGlobal);
AMBREL_SEAM(GlobalAlloc, FakeGlobalAlloc);
AMBREL_SEAM(GlobalFree, FakeGlobalFree);
AMBREL_SEAM(FindResourceW, FakeFindResourceW);
AMBREL_SEAM(SizeofResource, FakeSizeofResource);
AMBREL_SEAM(CreateDIBSection, FakeCreateDIBSection);
AMBREL_SEAM(DeleteObject, FakeDeleteObject);
AMBREL_SEAM(CreateCompatibleDC, FakeCreateCompatibleDC);
AMBREL_SEAM(DeleteDC, FakeDeleteDC);
AMBREL_SEAM(SetStretchBltMode, FakeSetStretchBltMode);
AMBREL_SEAM(GdiAlphaBlend, FakeGdiAlphaBlend);

TEST_F(Logo, TheShippedLogoIsBlendedCompletelyAroundItsCentre) {
    DrawLogo(screen, 160, 100, 64);
    const std::vector<Blend> expected = {
        {128, 68, 64, 64, 0, 0, 256, 256, AC_SRC_OVER, 0, 255, AC_SRC_ALPHA, true, HALFTONE}};
    EXPECT_EQ(g_blends, expected);
    EXPECT_EQ(g_app.logoWidth, 256U);
    EXPECT_EQ(g_app.logoHeight, 256U);
}

TEST_F(Logo, HalfOfAnOddSizeIsTruncated) {
    DrawLogo(screen, 50, 60, 33);
    ASSERT_EQ(g_blends.size(), 1U);
    EXPECT_EQ(g_blends[0].x, 34);
    EXPECT_EQ(g_blends[0].y, 44);
    EXPECT_EQ(g_blends[0].width, 33);
    EXPECT_EQ(g_blends[0].height, 33);
}

TEST_F(Logo, ItIsDecodedOnceForAllDrawings) {
    DrawLogo(screen, 100, 100, 64);
    HBITMAP first = g_app.logoBitmap;
    DrawLogo(screen, 100, 100, 32);
    DrawLogo(screen, 100, 100, 16);
    EXPECT_EQ(g_factories, 1);
    EXPECT_EQ(g_dibs, 1);
    EXPECT_EQ(g_blends.size(), 3U);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(g_app.logoBitmap, first);
}

TEST_F(Logo, AMissingResourceDrawsNothing) {
    g_noResource = true;
    ExpectNothingDrawn();
    EXPECT_EQ(g_factories, 0);
}

TEST_F(Logo, AResourceOfNoSizeDrawsNothing) {
    g_resourceSize = 0;
    ExpectNothingDrawn();
    EXPECT_EQ(g_factories, 0);
}

TEST_F(Logo, ABrokenResourceDrawsNothingAndIsTriedAgain) {
    g_resourceSize = 20;
    ExpectNothingDrawn();
    EXPECT_EQ(g_factories, 1);
    ExpectNothingDrawn();
    EXPECT_EQ(g_factories, 2);
    g_resourceSize = 0xFFFFFFFF;
    DrawLogo(screen, 100, 100, 64);
    EXPECT_EQ(g_blends.size(), 1U);
}

TEST_F(Logo, WithoutMemoryForTheCopyNothingIsDrawn) {
    g_noBlock = true;
    ExpectNothingDrawn();
    EXPECT_EQ(g_factories, 0);
}

TEST_F(Logo, WithoutAStreamTheCopyIsFreedAndNothingIsDrawn) {
    g_noStream = true;
    ExpectNothingDrawn();
    EXPECT_EQ(g_blocks, 0);
    EXPECT_EQ(g_factories, 0);
}

TEST_F(Logo, WithoutABitmapNothingIsDrawn) {
    g_noDib = true;
    ExpectNothingDrawn();
}

TEST_F(Logo, ABitmapWhosePixelsCannotBeCopiedIsDeleted) {
    g_noPixels = true;
    ExpectNothingDrawn();
    EXPECT_EQ(g_dibs, 0);
    EXPECT_EQ(g_deleted.size(), 1U);
}

TEST_F(Logo, WithoutComNothingIsDrawn) {
    CoUninitialize();
    ExpectNothingDrawn();
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

TEST_F(Logo, FreeingDeletesTheBitmapOnceAndClearsIt) {
    DrawLogo(screen, 100, 100, 64);
    HBITMAP bitmap = g_app.logoBitmap;
    g_deleted.clear();
    FreeLogo();
    EXPECT_EQ(g_deleted, std::vector<HGDIOBJ>{bitmap});
    EXPECT_EQ(g_app.logoBitmap, nullptr);
    EXPECT_EQ(g_app.logoWidth, 0U);
    EXPECT_EQ(g_app.logoHeight, 0U);
    FreeLogo();
    EXPECT_EQ(g_deleted.size(), 1U);
}

TEST_F(Logo, APngBecomesPremultipliedPixelsFromTheTop) {
    const Decoded decoded = Decode(kSmallPng, sizeof(kSmallPng));
    ASSERT_NE(decoded.bitmap, nullptr);
    EXPECT_EQ(decoded.width, 3U);
    EXPECT_EQ(decoded.height, 2U);
    const std::vector<std::uint32_t> expected = {0xFFFF0000, 0x80008000, 0xFF090807,
                                                 0x00000000, 0x3314280A, 0xFF000000};
    EXPECT_EQ(PixelsOf(decoded), expected);
    DeleteObject(decoded.bitmap);
}

TEST_F(Logo, APngWithoutAlphaBecomesOpaque) {
    const Decoded decoded = Decode(kOpaquePng, sizeof(kOpaquePng));
    ASSERT_NE(decoded.bitmap, nullptr);
    EXPECT_EQ(PixelsOf(decoded), (std::vector<std::uint32_t>{0xFF0A141E, 0xFF28323C}));
    DeleteObject(decoded.bitmap);
}

TEST_F(Logo, DataThatIsNotAPngDecodesToNull) {
    constexpr std::uint8_t text[] = "this is no picture at all, only some text";
    EXPECT_EQ(Decode(text, sizeof(text)).bitmap, nullptr);
    EXPECT_EQ(Decode(text, 0).bitmap, nullptr);
    EXPECT_EQ(Decode(kSmallPng, 8).bitmap, nullptr) << "the signature alone";
    EXPECT_EQ(Decode(kSmallPng, 33).bitmap, nullptr) << "signature and header, no pixels";
}

TEST_F(Logo, ATruncatedPngLeaksNoBitmap) {
    for (std::size_t size = 0; size < sizeof(kSmallPng); ++size) {
        const Decoded decoded = Decode(kSmallPng, size);
        if (decoded.bitmap != nullptr) DeleteObject(decoded.bitmap);
        ASSERT_EQ(g_dibs, 0) << "cut to " << size << " bytes";
    }
}
