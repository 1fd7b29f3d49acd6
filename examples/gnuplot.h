#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

/// A picture drawn by gnuplot, which reads its commands from a pipe: SVG or PNG by the name of the file.
class Gnuplot {
 public:
  /// Throws std::runtime_error for another ending, and where the program cannot be started.
  Gnuplot(const std::string& file, int width, int height) {
    const bool isPng = file.ends_with(".png");
    if (!isPng && !file.ends_with(".svg")) throw std::runtime_error(file + ": the picture must be .svg or .png");
    if (file.find('\'') != std::string::npos) throw std::runtime_error(file + ": the name must not hold a quote");
    const bool wasThere = std::filesystem::exists(file);
    if (!std::ofstream(file, std::ios::app)) throw std::runtime_error("cannot write " + file);
    if (!wasThere) std::filesystem::remove(file);
    m_pipe = popen("gnuplot", "w");
    if (m_pipe == nullptr) throw std::runtime_error("cannot start gnuplot");
    Write("set terminal " + std::string(isPng ? "pngcairo" : "svg") + " size " + std::to_string(width) + "," +
          std::to_string(height) + "\nset output '" + file + "'\n");
  }
  Gnuplot(const Gnuplot&) = delete;
  Gnuplot& operator=(const Gnuplot&) = delete;
  ~Gnuplot() {
    if (m_pipe != nullptr) pclose(m_pipe);
  }

  void Write(const std::string& commands) { std::fputs(commands.c_str(), m_pipe); }

  /// Finishes the picture; throws std::runtime_error when gnuplot is not there or did not like what it read.
  void Finish() {
    const int status = pclose(m_pipe);
    m_pipe = nullptr;
    if (status != 0) throw std::runtime_error("gnuplot failed; is the package gnuplot-nox installed?");
  }

 private:
  std::FILE* m_pipe = nullptr;
};
