#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adcheck/scan/PageScan.h"

namespace qorix::tools::adcheck {

// A plain look at a script, no parser of it: comments, string literals and regular expressions are
// told from the rest. Offsets are bytes of the script.

class ScriptScan {
 public:
  explicit ScriptScan(std::string_view script);

  /// Whether a function of that name is visibly defined: "function name", "name = ...".
  bool defines(std::string_view name) const { return definitionOf(name).has_value(); }

  /// Where the function of that name visibly returns a list instead of a text; nothing when that
  /// cannot be told.
  std::optional<std::size_t> listReturnedBy(std::string_view name) const;

  /// The string literals, without quotes, that the function of that name visibly returns, or that
  /// are the elements of a list that it returns or joins.
  std::vector<Part> textsReturnedBy(std::string_view name) const;

 private:
  void mask();
  bool beginsExpression(std::size_t at) const;
  std::size_t endOfExpression(std::size_t slash) const;
  std::size_t skipBlanks(std::size_t from) const;
  std::size_t findWord(std::string_view word, std::size_t from) const;
  std::size_t closing(std::size_t open) const;
  std::optional<std::size_t> definitionOf(std::string_view name) const;
  std::optional<Part> bodyOf(std::string_view name) const;
  std::vector<Part> returnedBy(std::string_view name) const;
  Part expressionAt(std::size_t begin) const;
  std::optional<Part> soleValueOf(std::string_view variable) const;
  Part valueOf(Part expression) const;
  bool isList(Part expression) const;
  Part trimmedPart(Part part) const;
  std::optional<Part> literalIn(Part expression) const;
  std::vector<Part> elementsOf(std::size_t open) const;
  std::optional<std::size_t> joinedList(Part expression) const;
  bool isNothingOrJoin(Part part) const;

  std::string_view script_;
  std::string code_;  // the script with blanks for comments and for the insides of strings
  std::vector<Part> strings_;
};

}  // namespace qorix::tools::adcheck
