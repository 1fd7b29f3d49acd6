#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "formats.h"

// The header of libjpeg wants <cstdio> before it.
#include <jpeglib.h>

// libjpeg reports an error by calling a function that must not return: it jumps to Guarded(), past nothing that needs a
// destructor. A warning means that samples were guessed, so it ends the reading too.

namespace pictureFormats {
namespace {

constexpr int quality = 95;
constexpr unsigned longestMarker = 0xfff0;
constexpr double centimetresPerInch = 2.54;
constexpr std::string_view exifHeader("Exif\0\0", 6);

struct Errors : jpeg_error_mgr {
  std::jmp_buf jump;
  std::array<char, JMSG_LENGTH_MAX> message = {};
};

[[noreturn]] void Jump(j_common_ptr control) {
  auto* errors = static_cast<Errors*>(control->err);
  errors->format_message(control, errors->message.data());
  std::longjmp(errors->jump, 1);
}

void OnMessage(j_common_ptr control, int level) {
  if (level < 0) Jump(control);
}

void SetErrors(Errors& errors) {
  jpeg_std_error(&errors);
  errors.error_exit = Jump;
  errors.emit_message = OnMessage;
}

/// Runs @p step. @return false when libjpeg gave up in it
template <typename Step>
bool Guarded(Errors& errors, Step step) {
  if (setjmp(errors.jump) != 0) return false;
  step();
  return true;
}

struct Reader : jpeg_decompress_struct {
  Errors errors;
  Reader() : jpeg_decompress_struct() {
    SetErrors(errors);
    err = &errors;
    if (!Guarded(errors, [&] { jpeg_create_decompress(this); })) throw std::bad_alloc();
  }
  ~Reader() { jpeg_destroy_decompress(this); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
};

struct Writer : jpeg_compress_struct {
  Errors errors;
  Writer() : jpeg_compress_struct() {
    SetErrors(errors);
    err = &errors;
    if (!Guarded(errors, [&] { jpeg_create_compress(this); })) throw std::bad_alloc();
  }
  ~Writer() { jpeg_destroy_compress(this); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
};

void ReadHeader(Reader& reader, std::FILE* stream) {
  jpeg_stdio_src(&reader, stream);
  jpeg_save_markers(&reader, JPEG_COM, 0xffff);
  jpeg_save_markers(&reader, JPEG_APP0 + 1, 0xffff);
  jpeg_save_markers(&reader, JPEG_APP0 + 2, 0xffff);
  jpeg_read_header(&reader, TRUE);
}

PictureInformation InformationOf(Reader& reader) {
  PictureInformation information;
  for (const jpeg_marker_struct* marker = reader.marker_list; marker != nullptr; marker = marker->next) {
    const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
    if (marker->marker == JPEG_COM) {
      information.texts.push_back({"Comment", std::string(data), false});
    } else if (marker->marker == JPEG_APP0 + 1 && data.starts_with(exifHeader)) {
      information.exif.assign(marker->data + exifHeader.size(), marker->data + data.size());
    }
  }
  JOCTET* profile = nullptr;
  unsigned count = 0;
  if (jpeg_read_icc_profile(&reader, &profile, &count) == TRUE) {
    information.iccProfile.assign(profile, profile + count);
    std::free(profile);
  }
  const double metre = reader.density_unit == 1 ? 100 / centimetresPerInch : reader.density_unit == 2 ? 100 : 0;
  information.horizontalResolution = reader.X_density * metre;
  information.verticalResolution = reader.Y_density * metre;
  return information;
}

/// Starts the file and writes all that stands before the rows.
void WriteHeader(Writer& writer, std::FILE* stream, const Picture& picture, const JOCTET* exif, unsigned exifSize) {
  const PictureInformation& information = picture.information;
  jpeg_stdio_dest(&writer, stream);
  writer.image_width = static_cast<JDIMENSION>(picture.width);
  writer.image_height = static_cast<JDIMENSION>(picture.height);
  writer.input_components = picture.channelsNb;
  writer.in_color_space = picture.channelsNb == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&writer);
  jpeg_set_quality(&writer, quality, TRUE);
  // Colours in full resolution: halving them would smear what was just cleaned.
  writer.comp_info[0].h_samp_factor = writer.comp_info[0].v_samp_factor = 1;
  if (information.horizontalResolution > 0 && information.verticalResolution > 0) {
    writer.density_unit = 1;
    writer.X_density = static_cast<UINT16>(information.horizontalResolution * centimetresPerInch / 100 + 0.5);
    writer.Y_density = static_cast<UINT16>(information.verticalResolution * centimetresPerInch / 100 + 0.5);
  }
  jpeg_start_compress(&writer, TRUE);
  if (exifSize > 0) jpeg_write_marker(&writer, JPEG_APP0 + 1, exif, exifSize);
  if (!information.iccProfile.empty()) {
    jpeg_write_icc_profile(&writer, information.iccProfile.data(),
                           static_cast<unsigned>(information.iccProfile.size()));
  }
  for (const PictureText& text : information.texts) {
    const auto length = static_cast<unsigned>(text.content.size());
    const auto* content = reinterpret_cast<const JOCTET*>(text.content.data());
    if (length < longestMarker) jpeg_write_marker(&writer, JPEG_COM, content, length);
  }
}

}  // namespace

Picture ReadJpeg(std::FILE* stream, const std::string& path, const RowProgress& progress) {
  Reader reader;
  const auto fail = [&] { Fail(path, reader.errors.message.data()); };
  if (!Guarded(reader.errors, [&] { ReadHeader(reader, stream); })) fail();
  const bool isGray = reader.jpeg_color_space == JCS_GRAYSCALE;
  if (!isGray && reader.jpeg_color_space != JCS_YCbCr && reader.jpeg_color_space != JCS_RGB) {
    Fail(path, "has the colours of a printer (CMYK), gray or RGB is expected");
  }
  Picture picture;
  Shape(picture, path, reader.image_width, reader.image_height, isGray ? 1 : 3, 8);
  reader.out_color_space = isGray ? JCS_GRAYSCALE : JCS_RGB;
  if (!Guarded(reader.errors, [&] { jpeg_start_decompress(&reader); })) fail();
  for (std::int32_t y = 0; y < picture.height; ++y) {
    JSAMPROW row = picture.Row(y);
    if (!Guarded(reader.errors, [&] { jpeg_read_scanlines(&reader, &row, 1); })) fail();
    if (progress) progress(y + 1, picture.height);
  }
  // The end of the work frees the markers.
  picture.information = InformationOf(reader);
  if (!Guarded(reader.errors, [&] { jpeg_finish_decompress(&reader); })) fail();
  return picture;
}

void WriteJpeg(std::FILE* stream, const std::string& path, const Picture& picture, const RowProgress& progress) {
  Writer writer;
  const auto fail = [&] { Fail(path, writer.errors.message.data()); };
  std::vector<JOCTET> exif;
  const std::vector<std::uint8_t>& stated = picture.information.exif;
  if (!stated.empty() && stated.size() + exifHeader.size() < longestMarker) {
    exif.resize(exifHeader.size() + stated.size());
    std::copy(stated.begin(), stated.end(), std::copy(exifHeader.begin(), exifHeader.end(), exif.begin()));
  }
  const auto exifSize = static_cast<unsigned>(exif.size());
  if (!Guarded(writer.errors, [&] { WriteHeader(writer, stream, picture, exif.data(), exifSize); })) fail();
  for (std::int32_t y = 0; y < picture.height; ++y) {
    JSAMPROW row = const_cast<JSAMPROW>(picture.Row(y));
    if (!Guarded(writer.errors, [&] { jpeg_write_scanlines(&writer, &row, 1); })) fail();
    if (progress) progress(y + 1, picture.height);
  }
  if (!Guarded(writer.errors, [&] { jpeg_finish_compress(&writer); })) fail();
}

}  // namespace pictureFormats
