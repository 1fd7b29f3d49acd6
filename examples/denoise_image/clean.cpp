#include <qx/arrays/random.h>
#include <qx/wavelets/pixel_form.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <iostream>
#include <new>
#include <stdexcept>

#include "work.h"
#include <unistd.h>

namespace {

/// A bar on the terminal; nothing when the messages go elsewhere.
class ProgressBar {
 public:
  explicit ProgressBar(const char* label) : m_label(label) {}

  void operator()(std::int32_t done, std::int32_t total) {
    static const bool onTerminal = isatty(STDERR_FILENO) != 0;
    const std::int32_t filled = total > 0 ? static_cast<std::int32_t>(std::int64_t{length} * done / total) : length;
    if (!onTerminal || filled == m_filled) return;
    m_filled = filled;
    std::cerr << '\r' << m_label << " [" << std::string(static_cast<std::size_t>(filled), '#')
              << std::string(static_cast<std::size_t>(length - filled), ' ') << ']' << (done < total ? "" : "\r\033[K")
              << std::flush;
  }

 private:
  static constexpr std::int32_t length = 40;
  const char* m_label;
  std::int32_t m_filled = -1;
};

std::size_t SamplesNb(const Picture& picture) {
  return picture.PixelsNb() * static_cast<std::size_t>(picture.channelsNb);
}

std::uint16_t* Words(std::uint8_t* bytes) { return reinterpret_cast<std::uint16_t*>(bytes); }

std::vector<float> ToFloats(const Picture& picture) {
  std::vector<float> samples(SamplesNb(picture));
  if (picture.bitsPerSample == 8) {
    std::copy(picture.bytes.begin(), picture.bytes.end(), samples.begin());
  } else {
    for (std::size_t i = 0; i < samples.size(); ++i) {
      std::uint16_t word = 0;
      std::memcpy(&word, picture.bytes.data() + 2 * i, 2);
      samples[i] = word;
    }
  }
  return samples;
}

/// Writes the samples into @p picture, which has their shape: rounded and saturated.
void FromFloats(const std::vector<float>& samples, Picture& picture) {
  if (picture.bitsPerSample == 8) {
    qxSaturate(samples.size(), samples.data(), picture.bytes.data());
  } else {
    qxSaturate(samples.size(), samples.data(), Words(picture.bytes.data()));
  }
}

bool IsAlpha(const Picture& picture, std::size_t sample) {
  const auto channelsNb = static_cast<std::size_t>(picture.channelsNb);
  return picture.HasAlpha() && sample % channelsNb == channelsNb - 1;
}

void AddNoise(const Picture& picture, double sigma, std::uint64_t seed, std::vector<float>& samples) {
  CQXRandom<float> random;
  random.SetAlgorithm(1);
  random.SetNormal(0, static_cast<float>(sigma));
  random.SetXorshift64Seed(seed);
  random.Initialize();
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (!IsAlpha(picture, i)) samples[i] += random.GetNumber();
  }
}

/// Peak signal-to-noise ratio of the colours in decibels; infinite for equal pictures.
double Psnr(const Picture& picture, const std::vector<float>& reference, const std::vector<float>& samples) {
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < reference.size(); ++i) {
    if (IsAlpha(picture, i)) continue;
    const double difference = static_cast<double>(samples[i]) - static_cast<double>(reference[i]);
    sum += difference * difference;
    ++count;
  }
  const double peak = picture.Peak();
  return 10 * std::log10(peak * peak * static_cast<double>(count) / sum);
}

bool IsConstant(const Picture& picture) {
  const std::size_t pixel = picture.RowBytes() / static_cast<std::size_t>(picture.width);
  return std::equal(picture.bytes.begin() + static_cast<std::ptrdiff_t>(pixel), picture.bytes.end(),
                    picture.bytes.begin());
}

template <typename Sample>
void Reduce(const Picture& shape, Sample* samples, const Options& options, Report& report) {
  const auto coloursNb = static_cast<std::size_t>(shape.ColoursNb());
  std::vector<double> sigma = options.sigma;
  if (sigma.size() == 1) sigma.resize(coloursNb, sigma.front());
  if (!sigma.empty() && sigma.size() != coloursNb)
    throw std::runtime_error("--sigma wants one number for each channel");
  report.planeNoise.resize(coloursNb);

  qxNoiseReductionOptions reduction = ToLibraryOptions(options);
  reduction.noise = sigma.empty() ? nullptr : sigma.data();
  reduction.planeNoise = report.planeNoise.data();
  reduction.alphaChannel = shape.HasAlpha() ? shape.channelsNb - 1 : -1;
  ProgressBar bar("cleaning");
  const auto start = std::chrono::steady_clock::now();
  if (qxReduceImageNoise(shape.width, shape.height, shape.channelsNb, samples, reduction, bar) == 0) {
    throw std::bad_alloc();
  }
  report.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// Adds the noise to a copy in floats, which is what the side by side picture shows, and cleans it.
Picture CleanWithAddedNoise(Picture& picture, const Options& options, Report& report) {
  const std::vector<float> original = ToFloats(picture);
  std::vector<float> samples = original;
  AddNoise(picture, options.addedNoise, options.seed, samples);
  Picture noisy = picture;
  FromFloats(samples, noisy);
  const double before = Psnr(picture, original, samples);
  Reduce(picture, samples.data(), options, report);
  FromFloats(samples, picture);
  report.psnr = {before, Psnr(picture, original, ToFloats(picture))};
  return noisy;
}

/// The pictures from left to right, with a white gap between them. All have the same shape.
Picture SideBySide(const std::vector<const Picture*>& pictures) {
  const Picture& first = *pictures.front();
  const auto pixelBytes = static_cast<std::size_t>(first.channelsNb * first.bitsPerSample / 8);
  constexpr std::int32_t gap = 8;
  const auto count = static_cast<std::int32_t>(pictures.size());
  Picture result = {count * first.width + (count - 1) * gap,
                    first.height,
                    first.channelsNb,
                    first.bitsPerSample,
                    first.isPremultiplied,
                    {},
                    first.information};
  result.bytes.reserve(result.RowBytes() * static_cast<std::size_t>(result.height));
  for (std::int32_t y = 0; y < first.height; ++y) {
    for (const Picture* picture : pictures) {
      if (picture != &first) result.bytes.insert(result.bytes.end(), gap * pixelBytes, 255);
      result.bytes.insert(result.bytes.end(), picture->Row(y), picture->Row(y) + picture->RowBytes());
    }
  }
  return result;
}

}  // namespace

Report Clean(const Task& task, const Options& options) {
  Picture picture = ReadPicture(task.input, ProgressBar("reading"));
  Report report;
  report.width = picture.width;
  report.height = picture.height;
  report.channelsNb = picture.channelsNb;
  report.bitsPerSample = picture.bitsPerSample;

  // Every place and format is tried before the work.
  std::vector<OutputFile> files;
  for (const std::string& path : {task.output, task.sideBySide}) {
    if (path.empty()) continue;
    CheckFormat(path, picture);
    files.emplace_back(path);
  }
  const bool isConstant = IsConstant(picture);
  const bool needsOriginal = !task.sideBySide.empty();
  Picture original = needsOriginal ? picture : Picture(), noisy;
  if (options.addedNoise > 0) {
    noisy = CleanWithAddedNoise(picture, options, report);
  } else if (picture.bitsPerSample == 8) {
    Reduce(picture, picture.bytes.data(), options, report);
  } else {
    Reduce(picture, Words(picture.bytes.data()), options, report);
  }
  report.noiseIsMissing = !isConstant && options.sigma.empty() &&
                          std::find(report.planeNoise.begin(), report.planeNoise.end(), 0.0) != report.planeNoise.end();

  WritePicture(files.front(), picture, ProgressBar("writing"));
  if (needsOriginal) {
    std::vector<const Picture*> pictures = {&original, &picture};
    if (options.addedNoise > 0) pictures.insert(pictures.begin() + 1, &noisy);
    WritePicture(files.back(), SideBySide(pictures), ProgressBar("writing"));
  }
  OutputFile::PublishAll(files);
  return report;
}
