#include "tools/common/CommandLine.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "text/TextLists.h"
#include "tools/common/Streams.h"

namespace qorix::tools {

namespace {

constexpr int kWrongUsage = 2;

}  // namespace

CommandLine::CommandLine(const std::string& program, const std::string& description)
    : CLI::App(description, program) {
  constexpr std::size_t kColumn = 28;
  set_help_flag("--help", "Print this");
  get_formatter()->column_width(kColumn);
}

CLI::Option* CommandLine::addSwitch(const std::string& name, bool& target,
                                    const std::string& description) {
  return add_flag(name, target, description)->disable_flag_override();
}

CLI::Option* CommandLine::addValue(const std::string& name, const std::string& valueName,
                                   const std::string& description,
                                   const std::function<void(const std::string&)>& take) {
  return add_option_function<std::string>(name, take, description)
      ->type_name(valueName)
      ->option_text(valueName)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

CLI::Option* CommandLine::addLanguages(std::vector<std::string>& target,
                                       const std::string& description) {
  return addValue("--languages", "LIST", description,
                  [&target](const std::string& value) { target = splitAtCommas(value); });
}

CommandLine::WholeSize CommandLine::sizeIn(const std::string& value, int largest) {
  const std::string name = "--view-size";
  const auto cross = value.find('x');
  if (cross == value.npos) {
    throw CLI::ValidationError(name, "cannot be '" + value + "', but for instance 800x600");
  }
  const std::string_view text = value;
  return {numberIn(name, value, text.substr(0, cross), 1, largest),
          numberIn(name, value, text.substr(cross + 1), 1, largest)};
}

void CommandLine::parseOrExit(int argc, char** argv) {
  const auto fail = [this](const std::string& why) {
    std::fprintf(stderr, "%s: %s\n", get_name().c_str(), why.c_str());
    std::exit(kWrongUsage);
  };
  const auto printAndExit = [&fail](const std::string& text) {
    if (!writeOutput(text)) {
      fail(std::string("the output cannot be written: ") + std::strerror(errno));
    }
    std::exit(EXIT_SUCCESS);
  };
  try {
    parse(argc, argv);
  } catch (const CLI::CallForHelp& /*asked*/) {
    printAndExit(help());
  } catch (const CLI::CallForVersion& /*asked*/) {
    printAndExit(version() + "\n");
  } catch (const CLI::ParseError& error) {
    fail(error.what() + std::string("\nTry --help."));
  }
}

}  // namespace qorix::tools
