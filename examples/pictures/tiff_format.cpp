#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <memory>

#include "formats.h"
#include <tiffio.h>
#include <unistd.h>

namespace pictureFormats {
namespace {

constexpr double centimetresPerInch = 2.54;
/// From here on a file wants offsets of 64 bits.
constexpr std::size_t largestClassicFile = 3'900'000'000;

using Message = std::array<char, 300>;

/// Keeps the first message: those that follow only say where it led.
int OnError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
  auto& message = *static_cast<Message*>(user);
  if (message[0] == '\0') std::vsnprintf(message.data(), message.size(), format, arguments);
  return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct Closer {
  void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, Closer>;

Tiff Open(std::FILE* stream, const char* mode, Message& message) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options, OnError, &message);
  TIFFOpenOptionsSetWarningHandlerExtR(options, OnWarning, nullptr);
  Tiff tiff(TIFFFdOpenExt(dup(fileno(stream)), "picture", mode, options));
  TIFFOpenOptionsFree(options);
  return tiff;
}

template <typename T>
T Field(TIFF* tiff, std::uint32_t tag, T fallback) {
  T value = fallback;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : fallback;
}

struct Layout {
  std::uint32_t width, height;
  std::uint16_t bits, samplesNb, photometric, planes, sampleFormat, extra;
  bool isPremultiplied, isTiled;

  explicit Layout(TIFF* tiff)
      : width(Field(tiff, TIFFTAG_IMAGEWIDTH, 0u)),
        height(Field(tiff, TIFFTAG_IMAGELENGTH, 0u)),
        bits(Field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1)),
        samplesNb(Field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1)),
        photometric(Field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK)),
        planes(Field<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG)),
        sampleFormat(Field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)),
        extra(0),
        isPremultiplied(false),
        isTiled(TIFFIsTiled(tiff) != 0) {
    std::uint16_t* kinds = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extra, &kinds) != 1) extra = 0;
    isPremultiplied = extra == 1 && kinds[0] == EXTRASAMPLE_ASSOCALPHA;
  }

  [[nodiscard]] bool IsGray() const noexcept {
    return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
  }
  /// Whether the samples can be taken as they stand.
  [[nodiscard]] bool IsDirect() const noexcept {
    return (bits == 8 || bits == 16) && sampleFormat == SAMPLEFORMAT_UINT &&
           (IsGray() || photometric == PHOTOMETRIC_RGB) && extra <= 1 && samplesNb == (IsGray() ? 1 : 3) + extra;
  }
  /// Whether the library can turn it into 8-bit RGB.
  [[nodiscard]] bool IsConvertible() const noexcept {
    return bits <= 8 && extra == 0 && sampleFormat == SAMPLEFORMAT_UINT &&
           (IsGray() || photometric == PHOTOMETRIC_PALETTE || photometric == PHOTOMETRIC_YCBCR);
  }
};

/// Puts @p count pixels of a buffer into a row: all samples of each, or those of one plane.
void Put(Picture& picture, std::int32_t y, std::uint32_t x, std::uint32_t count, const std::uint8_t* source,
         std::uint16_t plane, bool isPlanar) {
  const auto sampleBytes = static_cast<std::size_t>(picture.bitsPerSample / 8);
  const std::size_t pixelBytes = sampleBytes * static_cast<std::size_t>(picture.channelsNb);
  std::uint8_t* target = picture.Row(y) + x * pixelBytes;
  if (!isPlanar) {
    std::memcpy(target, source, count * pixelBytes);
    return;
  }
  target += plane * sampleBytes;
  for (std::uint32_t i = 0; i < count; ++i) std::memcpy(target + i * pixelBytes, source + i * sampleBytes, sampleBytes);
}

bool ReadRows(TIFF* tiff, Picture& picture, std::uint16_t plane, bool isPlanar, const RowProgress& progress) {
  std::vector<std::uint8_t> row(static_cast<std::size_t>(std::max<tmsize_t>(TIFFScanlineSize(tiff), 0)));
  const auto count = static_cast<std::uint32_t>(picture.width);
  for (std::int32_t y = 0; y < picture.height; ++y) {
    if (TIFFReadScanline(tiff, row.data(), static_cast<std::uint32_t>(y), plane) != 1) return false;
    Put(picture, y, 0, count, row.data(), plane, isPlanar);
    if (progress && plane == 0) progress(y + 1, picture.height);
  }
  return true;
}

bool ReadTiles(TIFF* tiff, Picture& picture, std::uint16_t plane, bool isPlanar, const RowProgress& progress) {
  const auto tileWidth = Field(tiff, TIFFTAG_TILEWIDTH, 0u), tileHeight = Field(tiff, TIFFTAG_TILELENGTH, 0u);
  if (tileWidth == 0 || tileHeight == 0) return false;
  std::vector<std::uint8_t> tile(static_cast<std::size_t>(std::max<tmsize_t>(TIFFTileSize(tiff), 0)));
  const auto rowBytes = static_cast<std::size_t>(TIFFTileRowSize(tiff));
  const auto width = static_cast<std::uint32_t>(picture.width), height = static_cast<std::uint32_t>(picture.height);
  for (std::uint32_t top = 0; top < height; top += tileHeight) {
    for (std::uint32_t left = 0; left < width; left += tileWidth) {
      if (TIFFReadTile(tiff, tile.data(), left, top, 0, plane) < 0) return false;
      for (std::uint32_t y = 0; y < std::min(tileHeight, height - top); ++y) {
        Put(picture, static_cast<std::int32_t>(top + y), left, std::min(tileWidth, width - left),
            tile.data() + y * rowBytes, plane, isPlanar);
      }
    }
    if (progress && plane == 0) {
      progress(static_cast<std::int32_t>(std::min(top + tileHeight, height)), picture.height);
    }
  }
  return true;
}

bool ReadSamples(TIFF* tiff, const Layout& layout, Picture& picture, const RowProgress& progress) {
  const bool isPlanar = layout.planes == PLANARCONFIG_SEPARATE && layout.samplesNb > 1;
  const auto planesNb = static_cast<std::uint16_t>(isPlanar ? layout.samplesNb : 1);
  for (std::uint16_t plane = 0; plane < planesNb; ++plane) {
    const auto read = layout.isTiled ? ReadTiles : ReadRows;
    if (!read(tiff, picture, plane, isPlanar, progress)) return false;
  }
  if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
    // Gray has one sample a pixel, or two with alpha, which keeps its sense.
    const std::size_t sampleBytes = layout.bits / 8u, step = sampleBytes * layout.samplesNb;
    for (std::size_t i = 0; i < picture.bytes.size(); i += step) {
      for (std::size_t k = 0; k < sampleBytes; ++k)
        picture.bytes[i + k] = static_cast<std::uint8_t>(~picture.bytes[i + k]);
    }
  }
  return true;
}

bool ReadConverted(TIFF* tiff, Picture& picture) {
  std::vector<std::uint32_t> raster(picture.PixelsNb());
  const auto width = static_cast<std::uint32_t>(picture.width), height = static_cast<std::uint32_t>(picture.height);
  if (TIFFReadRGBAImageOriented(tiff, width, height, raster.data(), ORIENTATION_TOPLEFT, 1) != 1) return false;
  std::uint8_t* target = picture.bytes.data();
  for (const std::uint32_t pixel : raster) {
    *target++ = static_cast<std::uint8_t>(TIFFGetR(pixel));
    if (picture.channelsNb == 1) continue;
    *target++ = static_cast<std::uint8_t>(TIFFGetG(pixel));
    *target++ = static_cast<std::uint8_t>(TIFFGetB(pixel));
  }
  return true;
}

constexpr std::array<std::pair<std::uint32_t, const char*>, 4> textTags = {{{TIFFTAG_IMAGEDESCRIPTION, "Description"},
                                                                            {TIFFTAG_ARTIST, "Author"},
                                                                            {TIFFTAG_COPYRIGHT, "Copyright"},
                                                                            {TIFFTAG_DATETIME, "Creation Time"}}};

PictureInformation InformationOf(TIFF* tiff) {
  PictureInformation information;
  std::uint32_t count = 0;
  std::uint8_t* profile = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &count, &profile) == 1) {
    information.iccProfile.assign(profile, profile + count);
  }
  const auto unit = Field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  const double metre = unit == RESUNIT_INCH ? 100 / centimetresPerInch : unit == RESUNIT_CENTIMETER ? 100 : 0;
  information.horizontalResolution = static_cast<double>(Field(tiff, TIFFTAG_XRESOLUTION, 0.0f)) * metre;
  information.verticalResolution = static_cast<double>(Field(tiff, TIFFTAG_YRESOLUTION, 0.0f)) * metre;
  information.orientation = Field<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  for (const auto& [tag, keyword] : textTags) {
    const char* text = nullptr;
    if (TIFFGetField(tiff, tag, &text) == 1 && text != nullptr) information.texts.push_back({keyword, text, false});
  }
  return information;
}

void SetInformation(TIFF* tiff, const PictureInformation& information) {
  if (!information.iccProfile.empty()) {
    TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(information.iccProfile.size()),
                 information.iccProfile.data());
  }
  if (information.horizontalResolution > 0 && information.verticalResolution > 0) {
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, information.horizontalResolution * centimetresPerInch / 100);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, information.verticalResolution * centimetresPerInch / 100);
  }
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, information.orientation);
  for (const auto& [tag, keyword] : textTags) {
    for (const PictureText& text : information.texts) {
      if (text.keyword == keyword) TIFFSetField(tiff, tag, text.content.c_str());
    }
  }
}

void SetLayout(TIFF* tiff, const Picture& picture) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bitsPerSample);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.channelsNb);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, picture.ColoursNb() == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
  TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
  if (picture.HasAlpha()) {
    const std::uint16_t kind = picture.isPremultiplied ? EXTRASAMPLE_ASSOCALPHA : EXTRASAMPLE_UNASSALPHA;
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  }
}

}  // namespace

Picture ReadTiff(std::FILE* stream, const std::string& path, const RowProgress& progress) {
  Message message = {};
  const Tiff tiff = Open(stream, "r", message);
  if (!tiff) Fail(path, message.data());
  const Layout layout(tiff.get());
  if (layout.photometric == PHOTOMETRIC_SEPARATED) {
    Fail(path, "has the colours of a printer (CMYK), gray or RGB is expected");
  }
  const bool isDirect = layout.IsDirect();
  if (!isDirect && !layout.IsConvertible()) {
    Fail(path, "has " + std::to_string(layout.samplesNb) + " samples of " + std::to_string(layout.bits) +
                   " bits a pixel, gray or RGB of 8 or 16 bits is expected");
  }
  Picture picture;
  const std::int32_t channelsNb = isDirect ? layout.samplesNb : layout.IsGray() ? 1 : 3;
  Shape(picture, path, layout.width, layout.height, channelsNb, isDirect ? layout.bits : 8);
  const bool complete =
      isDirect ? ReadSamples(tiff.get(), layout, picture, progress) : ReadConverted(tiff.get(), picture);
  if (!complete) Fail(path, message[0] != '\0' ? message.data() : "is damaged");
  picture.isPremultiplied = layout.isPremultiplied;
  picture.information = InformationOf(tiff.get());
  if (!isDirect) picture.information.orientation = ORIENTATION_TOPLEFT;
  return picture;
}

void WriteTiff(std::FILE* stream, const std::string& path, const Picture& picture, const RowProgress& progress) {
  Message message = {};
  Tiff tiff = Open(stream, picture.bytes.size() > largestClassicFile ? "w8" : "w", message);
  const auto fail = [&] { Fail(path, message[0] != '\0' ? message.data() : "could not be written"); };
  if (!tiff) fail();
  SetLayout(tiff.get(), picture);
  SetInformation(tiff.get(), picture.information);
  // The horizontal differences are formed in the row that is handed over.
  std::vector<std::uint8_t> row(picture.RowBytes());
  for (std::int32_t y = 0; y < picture.height; ++y) {
    std::copy_n(picture.Row(y), row.size(), row.data());
    if (TIFFWriteScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(y), 0) != 1) fail();
    if (progress) progress(y + 1, picture.height);
  }
  if (TIFFFlush(tiff.get()) != 1 || message[0] != '\0') fail();
}

}  // namespace pictureFormats
