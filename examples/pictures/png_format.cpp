#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>

#include "formats.h"
#include <png.h>

// libpng reports an error by a jump. Every call that may fail therefore runs in a step without objects of its own: the
// jump ends in Guarded(), and nothing that needs a destructor is ever jumped over.

namespace pictureFormats {
namespace {

struct Control {
  png_structp png = nullptr;
  png_infop info = nullptr;
  std::array<char, 200> message = {};
};

[[noreturn]] void Jump(png_structp png, png_const_charp message) {
  auto* control = static_cast<Control*>(png_get_error_ptr(png));
  std::strncpy(control->message.data(), message, control->message.size() - 1);
  png_longjmp(png, 1);
}

void Ignore(png_structp, png_const_charp) {}

/// Runs @p step. @return false when libpng gave up in it
template <typename Step>
bool Guarded(const Control& control, Step step) {
  if (setjmp(png_jmpbuf(control.png)) != 0) return false;
  step();
  return true;
}

struct Reader : Control {
  Reader() {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, static_cast<Control*>(this), Jump, Ignore);
    info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info == nullptr) throw std::bad_alloc();
  }
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
};

struct Writer : Control {
  Writer() {
    png = png_create_write_struct(PNG_LIBPNG_VER_STRING, static_cast<Control*>(this), Jump, Ignore);
    info = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (info == nullptr) throw std::bad_alloc();
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
};

bool MachineIsLittleEndian() {
  const std::uint16_t one = 1;
  std::uint8_t first = 0;
  std::memcpy(&first, &one, 1);
  return first == 1;
}

/// What libpng hands out stays its own: it is copied here.
PictureInformation InformationOf(png_structp png, png_infop info) {
  PictureInformation information;
  png_charp name = nullptr;
  png_bytep bytes = nullptr;
  png_uint_32 count = 0;
  int kind = 0;
  if (png_get_iCCP(png, info, &name, &kind, &bytes, &count) != 0) information.iccProfile.assign(bytes, bytes + count);
  if (png_get_eXIf_1(png, info, &count, &bytes) != 0) information.exif.assign(bytes, bytes + count);
  information.isSrgb = png_get_sRGB(png, info, &kind) != 0;
  double gamma = 0;
  if (png_get_gAMA(png, info, &gamma) != 0) information.gamma = gamma;
  png_uint_32 x = 0, y = 0;
  if (png_get_pHYs(png, info, &x, &y, &kind) != 0 && kind == PNG_RESOLUTION_METER) {
    information.horizontalResolution = x;
    information.verticalResolution = y;
  }
  png_textp texts = nullptr;
  int textsNb = 0;
  png_get_text(png, info, &texts, &textsNb);
  for (int i = 0; i < textsNb; ++i) {
    const bool isUtf8 = texts[i].compression >= PNG_ITXT_COMPRESSION_NONE;
    information.texts.push_back({texts[i].key, texts[i].text != nullptr ? texts[i].text : "", isUtf8});
  }
  return information;
}

/// Everything that stands before and behind the rows.
void SetInformation(png_structp png, png_infop info, const PictureInformation& information,
                    std::vector<png_text>& texts) {
  if (!information.iccProfile.empty()) {
    png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, information.iccProfile.data(),
                 static_cast<png_uint_32>(information.iccProfile.size()));
  } else if (information.isSrgb) {
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
  }
  if (information.gamma > 0) png_set_gAMA(png, info, information.gamma);
  if (!information.exif.empty()) {
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(information.exif.size()),
                   const_cast<png_bytep>(information.exif.data()));
  }
  if (information.horizontalResolution > 0 && information.verticalResolution > 0) {
    png_set_pHYs(png, info, static_cast<png_uint_32>(information.horizontalResolution + 0.5),
                 static_cast<png_uint_32>(information.verticalResolution + 0.5), PNG_RESOLUTION_METER);
  }
  if (!texts.empty()) png_set_text(png, info, texts.data(), static_cast<int>(texts.size()));
}

std::vector<png_text> TextsOf(const PictureInformation& information) {
  std::vector<png_text> texts;
  for (const auto& [keyword, content, isUtf8] : information.texts) {
    png_text text = {};
    text.compression = isUtf8 ? PNG_ITXT_COMPRESSION_NONE : PNG_TEXT_COMPRESSION_NONE;
    text.key = const_cast<png_charp>(keyword.c_str());
    text.text = const_cast<png_charp>(content.c_str());
    texts.push_back(text);
  }
  return texts;
}

struct Header {
  png_uint_32 width = 0, height = 0;
  std::int32_t channelsNb = 0, bits = 0, passesNb = 1;
};

/// Reads up to the rows and asks for gray or RGB of 8 or 16 bits, alpha where the file has any transparency.
void ReadHeader(png_structp png, png_infop info, std::FILE* stream, Header& header) {
  png_init_io(png, stream);
  png_set_user_limits(png, 1'000'000, 1'000'000);
  png_read_info(png, info);
  png_set_expand(png);
  if (MachineIsLittleEndian()) png_set_swap(png);
  header.passesNb = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  header.width = png_get_image_width(png, info);
  header.height = png_get_image_height(png, info);
  header.channelsNb = png_get_channels(png, info);
  header.bits = png_get_bit_depth(png, info);
}

}  // namespace

Picture ReadPng(std::FILE* stream, const std::string& path, const RowProgress& progress) {
  Reader reader;
  Header header;
  if (!Guarded(reader, [&] { ReadHeader(reader.png, reader.info, stream, header); })) {
    Fail(path, reader.message.data());
  }
  Picture picture;
  Shape(picture, path, header.width, header.height, header.channelsNb, header.bits);
  for (std::int32_t pass = 0; pass < header.passesNb; ++pass) {
    for (std::int32_t y = 0; y < picture.height; ++y) {
      if (!Guarded(reader, [&] { png_read_row(reader.png, picture.Row(y), nullptr); })) {
        Fail(path, reader.message.data());
      }
      if (progress && pass == header.passesNb - 1) progress(y + 1, picture.height);
    }
  }
  if (!Guarded(reader, [&] { png_read_end(reader.png, reader.info); })) Fail(path, reader.message.data());
  picture.information = InformationOf(reader.png, reader.info);
  return picture;
}

void WritePng(std::FILE* stream, const std::string& path, const Picture& picture, const RowProgress& progress) {
  constexpr std::array<int, 5> colourTypes = {0, PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                              PNG_COLOR_TYPE_RGB_ALPHA};
  Writer writer;
  std::vector<png_text> texts = TextsOf(picture.information);
  const auto begin = [&] {
    png_init_io(writer.png, stream);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(picture.width),
                 static_cast<png_uint_32>(picture.height), picture.bitsPerSample,
                 colourTypes[static_cast<std::size_t>(picture.channelsNb)], PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    SetInformation(writer.png, writer.info, picture.information, texts);
    png_write_info(writer.png, writer.info);
    if (MachineIsLittleEndian() && picture.bitsPerSample == 16) png_set_swap(writer.png);
  };
  if (!Guarded(writer, begin)) Fail(path, writer.message.data());
  for (std::int32_t y = 0; y < picture.height; ++y) {
    if (!Guarded(writer, [&] { png_write_row(writer.png, picture.Row(y)); })) Fail(path, writer.message.data());
    if (progress) progress(y + 1, picture.height);
  }
  if (!Guarded(writer, [&] { png_write_end(writer.png, writer.info); })) Fail(path, writer.message.data());
}

}  // namespace pictureFormats
