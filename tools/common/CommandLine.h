#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace qorix::tools {

// CLI11 reads the command lines: it checks values, required and exclusive options, and writes the
// help. GLib's parser leaves all that but the help to its caller. What is here is common to our
// programs.

/// A command line with --help.
class CommandLine : public CLI::App {
 public:
  CommandLine(const std::string& program, const std::string& description);

  /// An option that has no value.
  CLI::Option* addSwitch(const std::string& name, bool& target, const std::string& description);

  /// An option with a text, which may be empty.
  template <class Text>
  CLI::Option* addText(const std::string& name, Text& target, const std::string& valueName,
                       const std::string& description) {
    return addValue(name, valueName, description,
                    [&target](const std::string& value) { target = value; });
  }

  /// An option with a decimal number from `least` to `most`.
  template <class Number, class Target>
  CLI::Option* addNumber(const std::string& name, Target& target, Number least, Number most,
                         const std::string& valueName, const std::string& description) {
    return addValue(name, valueName, description,
                    [name, least, most, &target](const std::string& value) {
                      target = numberIn(name, value, value, least, most);
                    });
  }

  /// --view-size, a width and a height of at most `largest`.
  template <class Number>
  CLI::Option* addViewSize(Number& width, Number& height, int largest,
                           const std::string& description) {
    return addValue("--view-size", "WxH", description,
                    [&width, &height, largest](const std::string& value) {
                      const auto [first, second] = sizeIn(value, largest);
                      width = first;
                      height = second;
                    });
  }

  /// --languages, separated by commas, without the blanks around them.
  CLI::Option* addLanguages(std::vector<std::string>& target, const std::string& description);

  /// Reads the command line. Ends the process after --help and --version, and with status 2 after a
  /// message when the command line makes no sense or the help cannot be written.
  void parseOrExit(int argc, char** argv);

 private:
  struct WholeSize {
    int width;
    int height;
  };

  CLI::Option* addValue(const std::string& name, const std::string& valueName,
                        const std::string& description,
                        const std::function<void(const std::string&)>& take);
  static WholeSize sizeIn(const std::string& value, int largest);

  /// `part` of an option's value as a number.
  template <class Number>
  static Number numberIn(const std::string& name, const std::string& value, std::string_view part,
                         Number least, Number most) {
    Number number{};
    const char* end = part.data() + part.size();
    const auto [stop, error] = std::from_chars(part.data(), end, number);
    if (error != std::errc() || stop != end || !(number >= least && number <= most)) {
      throw CLI::ValidationError(name, "cannot be '" + value + "'");
    }
    return number;
  }
};

}  // namespace qorix::tools
