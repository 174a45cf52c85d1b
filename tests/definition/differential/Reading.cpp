#include "definition/differential/Reading.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace qorix {

namespace {

std::string quoted(const std::string& text) {
  std::ostringstream out;
  out << std::quoted(text);
  return out.str();
}

std::string quoted(const std::optional<std::string>& text) { return text ? quoted(*text) : "none"; }

std::string quoted(const std::optional<LocalizedTexts>& texts) {
  if (!texts) {
    return "none";
  }
  std::string result;
  for (const auto& [language, text] : *texts) {
    result += quoted(language) + ": " + quoted(text) + " ";
  }
  return result;
}

// A type has a letter, so that 1, 1.0, true and "1" differ. No recursion: values nest deeply.
class ValueWriter {
 public:
  std::string write(const Dictionary& dictionary) {
    std::vector<Step> steps;
    push(steps, dictionary);
    while (!steps.empty()) {
      const Step step = std::move(steps.back());
      steps.pop_back();
      out_ << step.text;
      if (step.value != nullptr) {
        write(*step.value, steps);
      }
    }
    return out_.str();
  }

 private:
  struct Step {
    std::string text;
    const Value* value = nullptr;  // written behind the text, unless null
  };

  /// What stands at the end of `steps` is written first.
  static void push(std::vector<Step>& steps, const Dictionary& dictionary) {
    const auto before = static_cast<std::ptrdiff_t>(steps.size());
    steps.push_back({"{"});
    for (const auto& [name, value] : dictionary) {
      steps.push_back({quoted(name) + "=", &value});
    }
    steps.push_back({"}"});
    std::reverse(steps.begin() + before, steps.end());
  }

  static void push(std::vector<Step>& steps, const Array& array) {
    const auto before = static_cast<std::ptrdiff_t>(steps.size());
    steps.push_back({"["});
    for (const Value& element : array) {
      steps.push_back({"", &element});
    }
    steps.push_back({"]"});
    std::reverse(steps.begin() + before, steps.end());
  }

  void write(const Value& value, std::vector<Step>& steps) {
    if (const auto* flag = value.as<bool>()) {
      out_ << (*flag ? "true " : "false ");
    } else if (const auto* integer = value.as<std::int64_t>()) {
      out_ << "i" << *integer << " ";
    } else if (const auto* fraction = value.as<double>()) {
      out_ << "d" << std::hexfloat << *fraction << " ";
    } else if (const auto* text = value.as<std::string>()) {
      out_ << quoted(*text) << " ";
    } else if (const auto* dictionary = value.as<Dictionary>()) {
      push(steps, *dictionary);
    } else if (const auto* array = value.as<Array>()) {
      push(steps, *array);
    } else {
      out_ << (value.isNull() ? "null " : "? ");
    }
  }

  std::ostringstream out_;
};

std::string described(const MyPushAdInfo& record) {
  std::ostringstream out;
  out << "adId " << record.adId() << "\nenable " << record.enable() << "\nversion "
      << quoted(record.version()) << "\nembed " << record.embed() << "\nwidth " << record.width()
      << "\nheight " << record.height() << "\noffsetx " << record.offsetx() << "\noffsety "
      << record.offsety() << "\ncount " << record.count() << "\ndelay " << record.delay()
      << "\nnotes " << quoted(record.notes()) << "\nadvance " << quoted(record.advance())
      << "\nadvanceDict "
      << (record.advanceDict() ? ValueWriter().write(*record.advanceDict()) : "none")
      << "\ntitleDict " << quoted(record.titleDict()) << "\nhtmlContentsDict "
      << quoted(record.htmlContentsDict()) << "\n";
  return out.str();
}

}  // namespace

std::string describe(const Reading& reading) {
  std::string text = reading.record == nullptr ? "refused\n" : described(*reading.record);
  for (const auto& line : reading.lines) {
    text += "log: " + line + "\n";
  }
  return text;
}

void noteFields(const MyPushAdInfo& record, std::set<std::string>& reached) {
  const auto note = [&](const char* name, bool isReached) {
    if (isReached) {
      reached.insert(name);
    }
  };
  note("adId", record.adId() != 0);
  note("enable", record.enable());
  note("disabled", !record.enable());
  note("version", !record.version()->empty());
  note("embed", record.embed() != 0);
  note("width", record.width() != 0);
  note("height", record.height() != 0);
  note("offsetx", record.offsetx() != 0);
  note("offsety", record.offsety() != 0);
  note("count", record.count() != 0);
  note("delay", record.delay() != 0);
  note("notes", !record.notes()->empty());
  note("advance", !record.advance()->empty());
  note("titleDict", record.titleDict()->size() > 1);
  note("htmlContentsDict", record.htmlContentsDict()->size() > 1);
  for (const auto& [name, value] : *record.advanceDict()) {
    reached.insert("member:" + name);
  }
}

}  // namespace qorix
