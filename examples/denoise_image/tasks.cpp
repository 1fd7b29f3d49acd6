#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "work.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> PicturesOf(const std::string& folder) {
  std::vector<std::string> pictures;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file() && IsPicturePath(entry.path().string())) pictures.push_back(entry.path().string());
  }
  if (pictures.empty()) throw std::runtime_error(folder + ": holds no picture");
  std::sort(pictures.begin(), pictures.end());
  return pictures;
}

bool IsPattern(const std::string& path) { return path.find("{}") != std::string::npos; }

std::string Fill(std::string pattern, const std::string& input) {
  const std::string name = fs::path(input).stem().string();
  for (std::size_t at = pattern.find("{}"); at != std::string::npos; at = pattern.find("{}", at + name.size())) {
    pattern.replace(at, 2, name);
  }
  return pattern;
}

/// Refuses a place that is an input or was given away before. Comparing each with each would take long for a large
/// folder: files are known by the canonical path of their folder and their name, and by the links between inputs.
void RefuseCollisions(const std::vector<Task>& tasks) {
  std::set<std::string> places;
  for (const Task& task : tasks) {
    for (const std::string& output : {task.output, task.sideBySide}) {
      if (output.empty()) continue;
      if (!places.insert(fs::weakly_canonical(fs::absolute(output)).string()).second) {
        throw std::runtime_error(output + ": two results would go to this place");
      }
      for (const Task& other : tasks) {
        if (IsSameFile(output, other.input)) throw std::runtime_error(output + ": is an input too");
      }
    }
    if (!task.sideBySide.empty() && IsSameFile(task.output, task.sideBySide)) {
      throw std::runtime_error(task.sideBySide + ": is the output too");
    }
  }
}

}  // namespace

std::vector<Task> ListTasks(const Options& options) {
  std::vector<std::string> inputs;
  bool hasFolder = false;
  for (const std::string& input : options.inputs) {
    std::error_code error;
    if (fs::is_directory(input, error)) {
      const std::vector<std::string> pictures = PicturesOf(input);
      inputs.insert(inputs.end(), pictures.begin(), pictures.end());
      hasFolder = true;
    } else {
      inputs.push_back(input);
    }
  }
  const bool areSeveral = hasFolder || inputs.size() > 1;
  for (const std::string& output : {options.output, options.sideBySide}) {
    if (areSeveral && !output.empty() && !IsPattern(output)) {
      throw std::runtime_error(output + ": several pictures want a pattern, like cleaned/{}.png");
    }
  }
  std::vector<Task> tasks;
  for (const std::string& input : inputs) {
    tasks.push_back({input, Fill(options.output, input), Fill(options.sideBySide, input)});
  }
  RefuseCollisions(tasks);
  return tasks;
}
