#include "ui/logo.h"

#include <cstring>

#include "app/state/app_state.h"
#include "res/resource_ids.h"
#include "win32/com_guards.h"
#include "win32/guards.h"
#include "win32/top_down_dib.h"

#include <objbase.h>
#include <wincodec.h>

namespace {

// Opens a stream on a copy of the logo resource. The stream owns the copy. False on failure.
bool OpenLogoStream(ComPointer<IStream>* stream) {
    HRSRC found = FindResourceW(g_app.instance, MAKEINTRESOURCEW(IDR_LOGO_PNG), RT_RCDATA);
    HGLOBAL loaded = found != nullptr ? LoadResource(g_app.instance, found) : nullptr;
    const void* bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    const DWORD size = found != nullptr ? SizeofResource(g_app.instance, found) : 0;
    if (bytes == nullptr || size == 0) return false;

    GlobalBlock copy(size);
    void* target = copy.block != nullptr ? GlobalLock(copy.block) : nullptr;
    if (target == nullptr) return false;
    std::memcpy(target, bytes, size);
    GlobalUnlock(copy.block);
    if (FAILED(CreateStreamOnHGlobal(copy.block, TRUE, stream->Out()))) return false;
    copy.Release();
    return true;
}

// Opens frame 0 of the stream and reads its size in pixels. False on failure or for an empty frame.
bool OpenFrame(IWICImagingFactory* factory, IStream* stream, ComPointer<IWICBitmapFrameDecode>* frame,
               UINT* width, UINT* height) {
    ComPointer<IWICBitmapDecoder> decoder;
    return SUCCEEDED(factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnLoad,
                                                      decoder.Out())) &&
           SUCCEEDED(decoder->GetFrame(0, frame->Out())) && SUCCEEDED((*frame)->GetSize(width, height)) &&
           *width != 0 && *height != 0;
}

// Creates a converter of the frame to premultiplied BGRA. False on failure.
bool ConvertFrame(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame,
                  ComPointer<IWICFormatConverter>* converter) {
    return SUCCEEDED(factory->CreateFormatConverter(converter->Out())) &&
           SUCCEEDED((*converter)
                         ->Initialize(frame, GUID_WICPixelFormat32bppPBGRA, WICBitmapDitherTypeNone, nullptr,
                                      0.0, WICBitmapPaletteTypeCustom));
}

HBITMAP CreateTopDownDib(UINT width, UINT height, void** bits) {
    BITMAPINFO info = {};
    info.bmiHeader = TopDownHeader(static_cast<LONG>(width), static_cast<LONG>(height), 32);
    return CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, bits, nullptr, 0);
}

void LoadLogoOnce() {
    if (g_app.logoBitmap != nullptr) return;
    ComPointer<IStream> stream;
    if (!OpenLogoStream(&stream)) return;
    g_app.logoBitmap = DecodePng(stream.pointer, &g_app.logoWidth, &g_app.logoHeight);
}

}  // namespace

HBITMAP DecodePng(IStream* stream, UINT* width, UINT* height) {
    ComPointer<IWICImagingFactory> factory;
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IWICImagingFactory, reinterpret_cast<void**>(factory.Out())))) {
        return nullptr;
    }
    ComPointer<IWICBitmapFrameDecode> frame;
    ComPointer<IWICFormatConverter> converter;
    UINT frameWidth = 0;
    UINT frameHeight = 0;
    if (!OpenFrame(factory.pointer, stream, &frame, &frameWidth, &frameHeight) ||
        !ConvertFrame(factory.pointer, frame.pointer, &converter)) {
        return nullptr;
    }

    void* bits = nullptr;
    OwnedGdi bitmap(CreateTopDownDib(frameWidth, frameHeight, &bits));
    if (bitmap.handle == nullptr) return nullptr;
    const UINT stride = frameWidth * 4;
    if (FAILED(converter->CopyPixels(nullptr, stride, stride * frameHeight, static_cast<BYTE*>(bits)))) {
        return nullptr;
    }
    *width = frameWidth;
    *height = frameHeight;
    return bitmap.Release();
}

void DrawLogo(HDC dc, int centreX, int centreY, int size) {
    LoadLogoOnce();
    if (g_app.logoBitmap == nullptr) return;
    const MemoryDc memory(dc);
    const SelectedObject selected(memory.dc, g_app.logoBitmap);
    SetStretchBltMode(dc, HALFTONE);
    const BLENDFUNCTION blend = {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    // msimg32's AlphaBlend is this call. gdi32 is a known DLL, which is always loaded from System32.
    GdiAlphaBlend(dc, centreX - size / 2, centreY - size / 2, size, size, memory.dc, 0, 0,
                  static_cast<int>(g_app.logoWidth), static_cast<int>(g_app.logoHeight), blend);
}

void FreeLogo() {
    if (g_app.logoBitmap != nullptr) DeleteObject(g_app.logoBitmap);
    g_app.logoBitmap = nullptr;
    g_app.logoWidth = 0;
    g_app.logoHeight = 0;
}
