#include "ui/picture.h"

#include <algorithm>

#include "ui/print.h"
#include "win32/com_guards.h"
#include "win32/guards.h"

#include <objbase.h>
#include <wincodec.h>

namespace {

constexpr std::uint32_t kRgb = 0xFFFFFF;

// Wine shows the Linux file system as drive Z.
std::wstring WindowsPath(const std::string& path) {
    std::wstring windows = path.rfind('/', 0) == 0 ? L"Z:" : L"";
    for (char c : path)
        windows += c == '/' ? L'\\' : static_cast<wchar_t>(c);
    return windows;
}

bool MakeFactory(ComPointer<IWICImagingFactory>* factory) {
    return SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_IWICImagingFactory, reinterpret_cast<void**>(factory->Out())));
}

std::vector<std::uint8_t> Bytes24(const Picture& picture) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(picture.pixels.size() * 3);
    for (std::uint32_t pixel : picture.pixels) {
        for (int shift : {0, 8, 16})
            bytes.push_back(static_cast<std::uint8_t>(pixel >> shift));
    }
    return bytes;
}

}  // namespace

std::uint32_t Picture::At(int x, int y) const {
    if (x < 0 || y < 0 || x >= width || y >= height) return 0xFF000000;
    return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                  static_cast<std::size_t>(x)];
}

std::string Difference(const Picture& actual, const Picture& expected) {
    if (actual.width != expected.width || actual.height != expected.height) {
        return Print("%dx%d instead of %dx%d pixels", actual.width, actual.height, expected.width,
                     expected.height);
    }
    int count = 0;
    int left = actual.width, top = actual.height, right = 0, bottom = 0;
    std::string first;
    for (int y = 0; y < actual.height; ++y) {
        for (int x = 0; x < actual.width; ++x) {
            const std::uint32_t is = actual.At(x, y);
            const std::uint32_t should = expected.At(x, y);
            if (is == should) continue;
            if (count++ == 0) {
                first = Print("first at (%d,%d): #%06X instead of #%06X", x, y, static_cast<unsigned>(is),
                              static_cast<unsigned>(should));
            }
            left = std::min(left, x);
            top = std::min(top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    }
    if (count == 0) return "";
    return Print("%d pixels differ within (%d,%d)-(%d,%d), ", count, left, top, right, bottom) + first;
}

bool ReadPng(const std::string& path, Picture* picture) {
    ComPointer<IWICImagingFactory> factory;
    ComPointer<IWICBitmapDecoder> decoder;
    ComPointer<IWICBitmapFrameDecode> frame;
    ComPointer<IWICFormatConverter> converter;
    UINT width = 0;
    UINT height = 0;
    *picture = Picture{};
    if (!MakeFactory(&factory) ||
        FAILED(factory->CreateDecoderFromFilename(WindowsPath(path).c_str(), nullptr, GENERIC_READ,
                                                  WICDecodeMetadataCacheOnDemand, decoder.Out())) ||
        FAILED(decoder->GetFrame(0, frame.Out())) || FAILED(frame->GetSize(&width, &height)) ||
        FAILED(factory->CreateFormatConverter(converter.Out())) ||
        FAILED(converter->Initialize(frame.pointer, GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                                     nullptr, 0.0, WICBitmapPaletteTypeCustom))) {
        return false;
    }
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height);
    const UINT size = width * height * 4;
    if (FAILED(converter->CopyPixels(nullptr, width * 4, size, reinterpret_cast<BYTE*>(pixels.data())))) {
        return false;
    }
    for (std::uint32_t& pixel : pixels)
        pixel &= kRgb;
    *picture = {static_cast<int>(width), static_cast<int>(height), std::move(pixels)};
    return true;
}

bool WritePng(const std::string& path, const Picture& picture) {
    ComPointer<IWICImagingFactory> factory;
    ComPointer<IWICStream> stream;
    ComPointer<IWICBitmapEncoder> encoder;
    ComPointer<IWICBitmapFrameEncode> frame;
    const auto width = static_cast<UINT>(picture.width);
    const auto height = static_cast<UINT>(picture.height);
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    std::vector<std::uint8_t> bytes = Bytes24(picture);
    return MakeFactory(&factory) && SUCCEEDED(factory->CreateStream(stream.Out())) &&
           SUCCEEDED(stream->InitializeFromFilename(WindowsPath(path).c_str(), GENERIC_WRITE)) &&
           SUCCEEDED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.Out())) &&
           SUCCEEDED(encoder->Initialize(stream.pointer, WICBitmapEncoderNoCache)) &&
           SUCCEEDED(encoder->CreateNewFrame(frame.Out(), nullptr)) &&
           SUCCEEDED(frame->Initialize(nullptr)) && SUCCEEDED(frame->SetSize(width, height)) &&
           SUCCEEDED(frame->SetPixelFormat(&format)) && IsEqualGUID(format, GUID_WICPixelFormat24bppBGR) &&
           SUCCEEDED(frame->WritePixels(height, width * 3, static_cast<UINT>(bytes.size()), bytes.data())) &&
           SUCCEEDED(frame->Commit()) && SUCCEEDED(encoder->Commit());
}
