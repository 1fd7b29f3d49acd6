// Takes the noise out of photographs; with --noise it adds the noise first and says how much of it went away.

#include <qx/foundation/version.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

#include "options.h"
#include "work.h"
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace {

constexpr const char* name = "denoise_image";

void Complain(const std::string& reason) { std::cerr << name << ": " << reason << '\n'; }

const char* Colours(const Report& report) {
  constexpr const char* names[] = {"", "gray", "gray and alpha", "RGB", "RGB and alpha"};
  return names[report.channelsNb];
}

std::string Numbers(const std::vector<double>& values) {
  std::string text;
  char number[32];
  for (const double value : values) {
    std::snprintf(number, sizeof number, " %.3f", value);
    text += number;
  }
  return text;
}

void PrintJson(const Task& task, const Options& options, const Report& report) {
  nlohmann::ordered_json json = {
      {"input", task.input},      {"output", task.output},         {"width", report.width},
      {"height", report.height},  {"channels", report.channelsNb}, {"bits", report.bitsPerSample},
      {"method", options.method}, {"wavelet", options.wavelet},    {"depth", options.depth},
      {"shifts", options.shifts}, {"noise", report.planeNoise},    {"milliseconds", report.milliseconds}};
  if (!task.sideBySide.empty()) json["side_by_side"] = task.sideBySide;
  // Equal pictures have no finite ratio, which JSON has no number for: null stands for it.
  if (report.psnr) json["psnr"] = {{"noisy", report.psnr->noisy}, {"cleaned", report.psnr->cleaned}};
  // Names of files are bytes; those that are no UTF-8 are shown with a replacement.
  std::cout << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void PrintLine(const Task& task, const Report& report) {
  std::printf("%s -> %s: %d x %d %s, noise%s, %.0f ms", task.input.c_str(), task.output.c_str(), report.width,
              report.height, Colours(report), Numbers(report.planeNoise).c_str(), report.milliseconds);
  if (report.psnr) std::printf(", %.2f -> %.2f dB", report.psnr->noisy, report.psnr->cleaned);
  std::printf("\n");
}

void PrintReport(const Task& task, const Options& options, const Report& report) {
  const auto line = [](const char* label, const std::string& text) { std::printf("%-12s %s\n", label, text.c_str()); };
  const std::string size = std::to_string(report.width) + " x " + std::to_string(report.height);
  line("picture",
       task.input + ", " + size + ", " + Colours(report) + ", " + std::to_string(report.bitsPerSample) + " bits");
  const std::string thresholding = options.method == "bivariate" ? "" : ", " + options.thresholding + " thresholding";
  line("method", options.method + thresholding + ", wavelet " + options.wavelet + ", depth " +
                     std::to_string(options.depth) + ", " + std::to_string(options.shifts) + " shifts");
  line("noise", Numbers(report.planeNoise).substr(1));
  if (report.psnr) {
    const auto [noisy, cleaned] = *report.psnr;
    std::printf("%-12s %.2f dB noisy, %.2f dB cleaned, gain %.2f dB\n", "PSNR", noisy, cleaned, cleaned - noisy);
  }
  const double megapixels = static_cast<double>(report.width) * report.height / 1e6;
  std::printf("%-12s %.1f ms, %.1f ms per megapixel\n", "time", report.milliseconds, report.milliseconds / megapixels);
  line("written", task.output + (task.sideBySide.empty() ? "" : ", " + task.sideBySide));
}

/// Cleans one picture and says so. @return whether it worked
bool Do(const Task& task, const Options& options, bool isOnlyOne) {
  try {
    const Report report = Clean(task, options);
    if (report.noiseIsMissing) {
      Complain(task.input + ": warning: no noise was found in a picture that is not constant; --sigma can give it");
    }
    if (options.asJson) {
      PrintJson(task, options, report);
    } else if (isOnlyOne) {
      PrintReport(task, options, report);
    } else {
      PrintLine(task, report);
    }
    return true;
  } catch (const std::bad_alloc&) {
    Complain(task.input + ": not enough memory");
  } catch (const std::exception& error) {
    Complain(error.what());
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  // A file that may not grow is an error of writing, with a line of its own.
  std::signal(SIGXFSZ, SIG_IGN);
  CLI::App app("Takes the noise out of photographs by wavelets.", name);
  app.set_version_flag("--version", "denoise_image " QX_VERSION);
  Options options;
  DeclareOptions(app, options);
  std::vector<Task> tasks;
  try {
    app.parse(argc, argv);
    tasks = ListTasks(options);
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const std::exception& error) {
    Complain(error.what());
    return 1;
  }
  bool allWorked = true;
  for (const Task& task : tasks) allWorked = Do(task, options, tasks.size() == 1) && allWorked;
  return allWorked ? 0 : 1;
}
