#pragma once

#include <string>
#include <vector>

#include "definition/differential/Random.h"

namespace qorix {

/// An element, or a run of text if it has no name.
struct Node {
  std::string name;
  std::string text;
  std::vector<Node> children;
};

/// Writes the tree in one of the many ways that XML offers: references, sections, comments,
/// instructions, attributes, entities, declarations.
std::string writtenAtRandom(Random& random, const Node& root);

/// Changes a few bytes.
void damage(Random& random, std::string& text);

}  // namespace qorix
