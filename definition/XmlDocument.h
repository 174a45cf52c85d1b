#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix {

class XmlElement;
class XmlSourceMap;
struct XmlOmission;

/// A well-formed XML document, read-only. Names are taken as they are written (a prefix is part of
/// the name); attributes, comments and processing instructions are dropped.
class XmlDocument {
 public:
  /// Reads a UTF-8 document. Returns nullopt if it is not well formed, if its entities expand to
  /// much more than the document itself, or if there is not enough memory. Opens no file and no
  /// connection, whatever the document says: external entities count as empty. Takes time and
  /// memory in proportion to the text.
  ///
  /// The parser gets the text in pieces of at most `pieceSize` bytes. Where they are cut makes no
  /// difference to the result.
  static std::optional<XmlDocument> parse(std::string_view text,
                                          std::size_t pieceSize = kLargestPiece);

  /// The same, without the texts that `omission` leaves out.
  static std::optional<XmlDocument> parse(std::string_view text, const XmlOmission& omission,
                                          std::size_t pieceSize = kLargestPiece);

  /// The same as the first, more slowly: notes in `sourceMap`, which must be new, where everything
  /// stands.
  static std::optional<XmlDocument> parse(std::string_view text, XmlSourceMap& sourceMap,
                                          std::size_t pieceSize = kLargestPiece);

  XmlElement root() const;

 private:
  friend class XmlElement;
  friend class XmlReader;
  friend class XmlSourceMap;

  static constexpr std::size_t kLargestPiece = std::size_t{1} << 16;  // the parser copies it

  struct Element {
    std::size_t nameBegin;
    std::size_t textBegin;
    std::size_t textEnd;
    std::size_t subtreeEnd;  // the index after the last descendant
  };

  // The elements are in document order, so a subtree is a run of elements, and all the text in it
  // is a run of the text. The names lie side by side: each ends where the next begins.
  std::string text_;
  std::string names_;
  std::deque<Element> elements_;      // grows without being copied
  std::vector<std::size_t> leftOut_;  // the elements whose texts are, in document order
};

/// One element of a document, which must outlive it and must not be moved. Cheap to copy.
class XmlElement {
 public:
  class Children;

  std::string_view name() const;

  /// All the text inside the element and its descendants, joined and untrimmed.
  std::string_view text() const;

  /// The child elements, in document order.
  Children children() const;
  Children childrenNamed(std::string_view name) const;
  std::optional<XmlElement> firstChildNamed(std::string_view name) const;

  /// Whether none of the text in it was left out.
  bool isWhole() const;

  bool operator==(const XmlElement&) const = default;

 private:
  friend class XmlDocument;
  friend class XmlReader;
  friend class XmlSourceMap;
  XmlElement(const XmlDocument& document, std::size_t index)
      : document_(&document), index_(index) {}

  const XmlDocument* document_;
  std::size_t index_;
};

/// The children of an element, or those of one name; for range-based loops.
class XmlElement::Children {
 public:
  class Iterator {
   public:
    Iterator(const Children& children, std::size_t index) : children_(&children), index_(index) {}
    XmlElement operator*() const { return {*children_->document_, index_}; }
    Iterator& operator++();
    bool operator==(const Iterator& other) const { return index_ == other.index_; }

   private:
    const Children* children_;
    std::size_t index_;
  };

  /// An empty `name` stands for every child: no element has an empty name.
  Children(const XmlDocument& document, std::size_t parent, std::string_view name);

  Iterator begin() const { return {*this, first_}; }
  Iterator end() const { return {*this, end_}; }
  bool empty() const { return first_ == end_; }

 private:
  std::size_t firstMatchFrom(std::size_t index) const;

  const XmlDocument* document_;
  std::string_view name_;
  std::size_t end_;
  std::size_t first_;
};

/// What a reader can do without: the texts in those grandchildren of the root that have this name,
/// and a parent of that name, unless they are needed. Their bytes are checked all the same.
struct XmlOmission {
  std::string_view parentName;
  std::string_view name;
  /// Asked once for each parent, where its first such element begins; `root` and `parent` end there
  /// for the time being.
  std::function<bool(XmlElement root, XmlElement parent)> isNeeded;
};

}  // namespace qorix
