#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <qorix/MyPushAdInfo.h>

namespace qorix {

/// What a reader made of a document.
struct Reading {
  std::shared_ptr<const MyPushAdInfo> record;  // null: the document is refused
  std::vector<std::string> lines;              // of the log
};

/// The reading as text, one field per line. Two readings with one text are the same.
std::string describe(const Reading& reading);

/// Notes the fields in which `record` differs from a new one, and the members of its customisation
/// that changed something, as "member:" and the name.
void noteFields(const MyPushAdInfo& record, std::set<std::string>& reached);

}  // namespace qorix
