#include "definition/XmlDocument.h"

#include <algorithm>

#include "definition/XmlReader.h"

namespace qorix {

std::optional<XmlDocument> XmlDocument::parse(std::string_view text, std::size_t pieceSize) {
  return readXml(text, nullptr, nullptr, std::clamp(pieceSize, std::size_t{1}, kLargestPiece));
}

std::optional<XmlDocument> XmlDocument::parse(std::string_view text, const XmlOmission& omission,
                                              std::size_t pieceSize) {
  return readXml(text, nullptr, &omission, std::clamp(pieceSize, std::size_t{1}, kLargestPiece));
}

std::optional<XmlDocument> XmlDocument::parse(std::string_view text, XmlSourceMap& sourceMap,
                                              std::size_t pieceSize) {
  return readXml(text, &sourceMap, nullptr, std::clamp(pieceSize, std::size_t{1}, kLargestPiece));
}

XmlElement XmlDocument::root() const { return {*this, 0}; }

std::string_view XmlElement::name() const {
  const auto& elements = document_->elements_;
  const std::size_t begin = elements[index_].nameBegin;
  const std::size_t end =
      index_ + 1 < elements.size() ? elements[index_ + 1].nameBegin : document_->names_.size();
  return std::string_view(document_->names_).substr(begin, end - begin);
}

std::string_view XmlElement::text() const {
  const auto& element = document_->elements_[index_];
  return std::string_view(document_->text_)
      .substr(element.textBegin, element.textEnd - element.textBegin);
}

XmlElement::Children XmlElement::children() const { return childrenNamed({}); }

XmlElement::Children XmlElement::childrenNamed(std::string_view name) const {
  return {*document_, index_, name};
}

std::optional<XmlElement> XmlElement::firstChildNamed(std::string_view name) const {
  const Children children = childrenNamed(name);
  return children.empty() ? std::nullopt : std::optional(*children.begin());
}

bool XmlElement::isWhole() const {
  const auto& leftOut = document_->leftOut_;
  const auto next = std::ranges::lower_bound(leftOut, index_);
  return next == leftOut.end() || *next >= document_->elements_[index_].subtreeEnd;
}

XmlElement::Children::Children(const XmlDocument& document, std::size_t parent,
                               std::string_view name)
    : document_(&document),
      name_(name),
      end_(document.elements_[parent].subtreeEnd),
      first_(firstMatchFrom(parent + 1)) {}

std::size_t XmlElement::Children::firstMatchFrom(std::size_t index) const {
  while (index < end_ && !name_.empty() && XmlElement(*document_, index).name() != name_) {
    index = document_->elements_[index].subtreeEnd;
  }
  return index;
}

XmlElement::Children::Iterator& XmlElement::Children::Iterator::operator++() {
  index_ = children_->firstMatchFrom(children_->document_->elements_[index_].subtreeEnd);
  return *this;
}

}  // namespace qorix
