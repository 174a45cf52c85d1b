#include "tools/adcheck/ScriptScan.h"

#include <algorithm>

#include "text/AsciiCase.h"

namespace qorix::adcheck {

namespace {

constexpr std::string_view kScriptBlanks = " \t\r\n";

bool isNamePart(char c) { return isAsciiLetter(c) || isAsciiDigit(c) || c == '_' || c == '$'; }

}  // namespace

ScriptScan::ScriptScan(std::string_view script) : script_(script), code_(script) { mask(); }

void ScriptScan::mask() {
  const auto blank = [&](std::size_t begin, std::size_t end) {
    std::fill(code_.begin() + static_cast<std::ptrdiff_t>(begin),
              code_.begin() + static_cast<std::ptrdiff_t>(end), ' ');
  };
  std::size_t at = 0;
  while ((at = script_.find_first_of("'\"`/", at)) != script_.npos) {
    const std::size_t begin = at;
    const char quote = script_[at];
    const auto rest = script_.substr(at);
    if (rest.starts_with("//")) {
      at = std::min(script_.find_first_of("\r\n", at), script_.size());
      blank(begin, at);
    } else if (rest.starts_with("/*")) {
      const auto end = script_.find("*/", at + 2);
      at = end == script_.npos ? script_.size() : end + 2;
      blank(begin, at);
    } else if (quote == '/') {
      at = beginsExpression(at) ? endOfExpression(at) : at;
      blank(begin + 1, std::max(at, begin + 1));
      at = std::min(at + 1, script_.size());
    } else {
      // A line break ends a string that is not closed, but for one between back quotes.
      for (++at; at < script_.size() && script_[at] != quote; ++at) {
        if (script_[at] == '\\') {
          ++at;
        } else if (quote != '`' && (script_[at] == '\n' || script_[at] == '\r')) {
          break;
        }
      }
      at = std::min(at, script_.size());
      strings_.push_back({begin + 1, at});
      blank(begin + 1, at);
      at = std::min(at + 1, script_.size());
    }
  }
}

/// Whether a slash there begins a regular expression: it does where no operator can stand.
bool ScriptScan::beginsExpression(std::size_t at) const {
  constexpr std::string_view kReturn = "return";
  const auto last = at == 0 ? code_.npos : code_.find_last_not_of(kScriptBlanks, at - 1);
  if (last == code_.npos || std::string_view("(,=:[!&|?{};").find(code_[last]) != code_.npos) {
    return true;
  }
  const auto before = std::string_view(code_).substr(0, last + 1);
  return before.ends_with(kReturn) &&
         (before.size() == kReturn.size() || !isNamePart(before[last - kReturn.size()]));
}

/// The slash that ends the regular expression, or the end of its line.
std::size_t ScriptScan::endOfExpression(std::size_t slash) const {
  bool isInClass = false;
  std::size_t at = slash + 1;
  for (; at < script_.size(); ++at) {
    const char c = script_[at];
    if (c == '\n' || c == '\r' || (c == '/' && !isInClass)) {
      break;
    }
    at += c == '\\' ? 1 : 0;
    isInClass = c == '[' || (isInClass && c != ']');
  }
  return std::min(at, script_.size());
}

std::size_t ScriptScan::skipBlanks(std::size_t from) const {
  return std::min(code_.find_first_not_of(kScriptBlanks, from), code_.size());
}

/// The next place of `word` that is no part of a longer name; the end when there is none.
std::size_t ScriptScan::findWord(std::string_view word, std::size_t from) const {
  for (std::size_t at = code_.find(word, from); at != code_.npos; at = code_.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if ((at == 0 || !isNamePart(code_[at - 1])) &&
        (end == code_.size() || !isNamePart(code_[end]))) {
      return at;
    }
  }
  return code_.size();
}

/// The bracket that closes the one at `open`; the end when there is none.
std::size_t ScriptScan::closing(std::size_t open) const {
  std::size_t depth = 0;
  for (std::size_t at = open; (at = code_.find_first_of("()[]{}", at)) != code_.npos; ++at) {
    const bool opens = code_[at] == '(' || code_[at] == '[' || code_[at] == '{';
    depth += opens ? 1 : 0;
    depth -= opens ? 0 : 1;
    if (depth == 0) {
      return at;
    }
  }
  return code_.size();
}

/// The offset behind the name where it is defined.
std::optional<std::size_t> ScriptScan::definitionOf(std::string_view name) const {
  constexpr std::string_view kFunction = "function";
  for (std::size_t at = findWord(name, 0); at < code_.size(); at = findWord(name, at + 1)) {
    const std::size_t end = at + name.size();
    const auto before = code_.find_last_not_of(kScriptBlanks, at == 0 ? 0 : at - 1);
    const auto start = std::string_view(code_).substr(0, before == code_.npos ? 0 : before + 1);
    if (at > 0 && start.ends_with(kFunction)) {
      return end;
    }
    const std::size_t sign = skipBlanks(end);
    const auto rest = std::string_view(code_).substr(sign);
    if (rest.starts_with('=') && !rest.starts_with("==") && !rest.starts_with("=>")) {
      return end;
    }
  }
  return std::nullopt;
}

/// What stands between the braces of a function, or the expression behind an arrow.
std::optional<Part> ScriptScan::bodyOf(std::string_view name) const {
  const auto definition = definitionOf(name);
  if (!definition) {
    return std::nullopt;
  }
  std::size_t at = skipBlanks(*definition);
  if (code_[std::min(at, code_.size() - 1)] == '=') {
    at = skipBlanks(at + 1);
    const auto rest = std::string_view(code_).substr(at);
    if (!rest.starts_with("function") && !rest.starts_with('(')) {
      return std::nullopt;
    }
    at = std::min(code_.find('(', at), code_.size());
  }
  if (at == code_.size() || code_[at] != '(') {
    return std::nullopt;
  }
  at = skipBlanks(closing(at) + 1);
  if (std::string_view(code_).substr(std::min(at, code_.size())).starts_with("=>")) {
    at = skipBlanks(at + 2);
    if (at < code_.size() && code_[at] != '{') {
      return expressionAt(at);
    }
  }
  if (at >= code_.size() || code_[at] != '{') {
    return std::nullopt;
  }
  return Part{at + 1, closing(at)};
}

/// Up to the semicolon, the line break or the bracket that ends it.
Part ScriptScan::expressionAt(std::size_t begin) const {
  std::size_t at = begin;
  while (at < code_.size()) {
    const char c = code_[at];
    if (c == '(' || c == '[' || c == '{') {
      at = std::min(closing(at) + 1, code_.size());
    } else if (c == ')' || c == ']' || c == '}' || c == ';' || c == ',') {
      break;
    } else if (c == '\n') {
      // The expression goes on when the next line begins with an operator.
      const std::size_t next = skipBlanks(at);
      if (next == code_.size() ||
          std::string_view(".+?:[(").find(code_[next]) == std::string_view::npos) {
        break;
      }
      at = next;
    } else {
      ++at;
    }
  }
  return {begin, at};
}

/// The expressions behind "return" of the function itself, or its one expression.
std::vector<Part> ScriptScan::returnedBy(std::string_view name) const {
  const auto body = bodyOf(name);
  if (!body) {
    return {};
  }
  if (body->begin > 0 && code_[body->begin - 1] != '{') {
    return {*body};
  }
  const auto text = std::string_view(code_).substr(body->begin, body->end - body->begin);
  const bool holdsFunctions = text.find("function") != text.npos || text.find("=>") != text.npos;
  constexpr std::size_t kMost = 100;  // more than any page has
  std::vector<Part> returned;
  std::size_t at = body->begin;
  while (at < body->end && returned.size() < kMost) {
    if (holdsFunctions && (code_[at] == '{' || code_[at] == '(')) {
      at = closing(at) + 1;  // what stands in there may be another function's
      continue;
    }
    constexpr std::string_view kReturn = "return";
    if (code_.compare(at, kReturn.size(), kReturn) == 0 && findWord(kReturn, at) == at) {
      const auto blank = code_.find_first_not_of(" \t", at + kReturn.size());
      if (blank != code_.npos) {
        returned.push_back(expressionAt(blank));
      }
      at += kReturn.size();
    }
    ++at;
  }
  return returned;
}

/// What the variable is set to, when it is set once.
std::optional<Part> ScriptScan::soleValueOf(std::string_view variable) const {
  std::optional<Part> value;
  for (std::size_t at = findWord(variable, 0); at < code_.size(); at = findWord(variable, at + 1)) {
    const std::size_t sign = skipBlanks(at + variable.size());
    const auto rest = std::string_view(code_).substr(sign);
    if (!rest.starts_with('=') || rest.starts_with("==") || rest.starts_with("=>")) {
      continue;
    }
    if (value) {
      return std::nullopt;
    }
    value = expressionAt(skipBlanks(sign + 1));
  }
  return value;
}

/// The value of the variable when the expression is one, else the expression.
Part ScriptScan::valueOf(Part expression) const {
  auto text = std::string_view(code_).substr(expression.begin, expression.end - expression.begin);
  std::size_t end = 0;
  while (end < text.size() && isNamePart(text[end])) {
    ++end;
  }
  if (end == 0 || text.find_first_not_of(kScriptBlanks, end) != text.npos) {
    return expression;
  }
  return soleValueOf(text.substr(0, end)).value_or(expression);
}

/// Whether the expression is a list literal and nothing else.
bool ScriptScan::isList(Part expression) const {
  const std::size_t begin = skipBlanks(expression.begin);
  return begin < expression.end && code_[begin] == '[' &&
         skipBlanks(closing(begin) + 1) >= expression.end;
}

std::optional<std::size_t> ScriptScan::listReturnedBy(std::string_view name) const {
  for (const Part expression : returnedBy(name)) {
    if (isList(valueOf(expression))) {
      return expression.begin;
    }
  }
  return std::nullopt;
}

/// Without blanks and comments around it.
Part ScriptScan::trimmedPart(Part part) const {
  part.begin = std::min(skipBlanks(part.begin), part.end);
  while (part.end > part.begin && kScriptBlanks.find(code_[part.end - 1]) != kScriptBlanks.npos) {
    --part.end;
  }
  return part;
}

/// The inside of the string literal that the expression is; nothing when it is more or less.
std::optional<Part> ScriptScan::literalIn(Part expression) const {
  const auto [begin, end] = trimmedPart(expression);
  const auto string = std::ranges::lower_bound(strings_, begin + 1, {}, &Part::begin);
  if (string == strings_.end() || string->begin != begin + 1 || string->end + 1 != end) {
    return std::nullopt;
  }
  const bool isComputed =
      code_[begin] == '`' && script_.substr(begin, end - begin).find("${") != script_.npos;
  return isComputed ? std::nullopt : std::optional(*string);
}

/// What stands between the commas of the list that begins at `open`.
std::vector<Part> ScriptScan::elementsOf(std::size_t open) const {
  const std::size_t end = closing(open);
  std::vector<Part> elements;
  std::size_t begin = open + 1;
  std::size_t at = begin;
  while (at < end) {
    if (code_[at] == '(' || code_[at] == '[' || code_[at] == '{') {
      at = closing(at);
    } else if (code_[at] == ',') {
      elements.push_back({begin, at});
      begin = at + 1;
    }
    ++at;
  }
  elements.push_back({begin, end});
  return elements;
}

/// Whether it is empty, or ".join(...)" and nothing else.
bool ScriptScan::isNothingOrJoin(Part part) const {
  constexpr std::string_view kJoin = ".join";
  const auto [begin, end] = trimmedPart(part);
  if (begin == end) {
    return true;
  }
  const std::size_t open = skipBlanks(begin + kJoin.size());
  return std::string_view(code_).substr(begin).starts_with(kJoin) && open < end &&
         code_[open] == '(' && closing(open) + 1 == end;
}

/// Where the list literal begins that the expression is or joins, itself or by its name.
std::optional<std::size_t> ScriptScan::joinedList(Part expression) const {
  const auto [begin, end] = trimmedPart(expression);
  std::size_t nameEnd = begin;
  while (nameEnd < end && isNamePart(code_[nameEnd])) {
    ++nameEnd;
  }
  if (nameEnd > begin) {
    const auto value = isNothingOrJoin({nameEnd, end})
                           ? soleValueOf(std::string_view(code_).substr(begin, nameEnd - begin))
                           : std::nullopt;
    return value && isList(*value) ? std::optional(skipBlanks(value->begin)) : std::nullopt;
  }
  const bool isJoined = begin < end && code_[begin] == '[' && closing(begin) < end &&
                        isNothingOrJoin({closing(begin) + 1, end});
  return isJoined ? std::optional(begin) : std::nullopt;
}

std::vector<Part> ScriptScan::textsReturnedBy(std::string_view name) const {
  std::vector<Part> texts;
  const auto takeLiteral = [&](Part expression) {
    if (const auto literal = literalIn(expression)) {
      texts.push_back(*literal);
    }
  };
  for (const Part expression : returnedBy(name)) {
    takeLiteral(expression);
    if (const auto list = joinedList(expression)) {
      std::ranges::for_each(elementsOf(*list), takeLiteral);
    }
  }
  return texts;
}

}  // namespace qorix::adcheck
