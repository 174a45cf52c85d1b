// The limits on entities are declared only to those who say that expat was built with them.
#define XML_DTD

#include "definition/XmlReader.h"

#include <expat.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "definition/XmlText.h"

namespace qorix {

namespace {

// The text is UTF-8, whatever its XML declaration says.
constexpr const char* kEncoding = "UTF-8";

// What entities may add: enough for pages that several languages share, too little for a bomb.
constexpr std::size_t kEntityBytes = std::size_t{8} << 20;
constexpr std::size_t kEntityFactor = 4;
constexpr std::size_t kEntityElements = std::size_t{1} << 18;
// "<x/>"
constexpr std::size_t kSmallestElement = 4;
// What attributes with default values may add, to the number of bytes in the document.
constexpr std::size_t kDefaultAttributes = std::size_t{1} << 20;

bool isVersionOne(std::string_view version) {
  return version.starts_with("1.") && version.size() > 2 &&
         version.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

}  // namespace

/// Builds a document from expat's events.
class XmlReader {
  struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };
  using ParserPointer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserDeleter>;

 public:
  XmlReader(std::string_view text, XmlSourceMap* sourceMap, const XmlOmission* omission)
      : parser_(XML_ParserCreate(kEncoding)),
        input_(text),
        sourceMap_(sourceMap),
        omission_(omission),
        mostElements_(text.size() / kSmallestElement + kEntityElements),
        mostDefaultAttributes_(text.size() + kDefaultAttributes) {}

  std::optional<XmlDocument> read(std::size_t pieceSize) {
    pieceSize_ = pieceSize;
    // The parser would take such a beginning for UTF-16; it refuses zero bytes further on.
    if (parser_ == nullptr || input_.substr(0, 4).find('\0') != input_.npos) {
      noteError("a zero byte near the beginning", 0);
      return std::nullopt;
    }
    prepareParser();
    // Enough unless entities add to it; memory that is not used costs nothing.
    document_.text_.reserve(input_.size());
    document_.names_.reserve(input_.size() / 2);
    if (sourceMap_ != nullptr) {
      return readNoting();
    }
    return parse() ? std::optional(std::move(document_)) : std::nullopt;
  }

 private:
  // Every byte passes through the parser, so that it knows where each event stands.
  std::optional<XmlDocument> readNoting() {
    XML_SetElementHandler(parser_.get(), startElementNoting, endElement);
    XML_SetCharacterDataHandler(parser_.get(), characterDataNoting);
    if (feed(input_, XML_TRUE)) {
      return std::move(document_);
    }
    const XML_Error code = XML_GetErrorCode(parser_.get());
    noteError(stopReason_ != nullptr ? stopReason_ : XML_ErrorString(code), sourceOffset());
    return std::nullopt;
  }

  void noteError(const char* message, std::size_t offset) {
    if (sourceMap_ != nullptr) {
      sourceMap_->error_ = {message, offset};
    }
  }

  /// Where the parser's current event or error stands.
  std::size_t sourceOffset() const {
    return static_cast<std::size_t>(std::max(XML_GetCurrentByteIndex(parser_.get()), XML_Index{0}));
  }

  void prepareParser() {
    XML_Parser parser = parser_.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, startElement, endElement);
    XML_SetCharacterDataHandler(parser, characterData);
    XML_SetCdataSectionHandler(parser, startSection, endSection);
    XML_SetXmlDeclHandler(parser, xmlDeclaration);
    XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
    XML_SetExternalEntityRefHandler(parser, readAsBlank);
    XML_SetEndDoctypeDeclHandler(parser, endDoctype);
    XML_SetSkippedEntityHandler(parser, skippedEntity);
    // No default handler: with one, internal entities would not be expanded.
    limitEntities();
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, 1);
  }

  // The parser holds the bytes that it has seen and those that entities added against the limit.
  void limitEntities() {
    XML_SetBillionLaughsAttackProtectionActivationThreshold(
        parser_.get(), kEntityFactor * input_.size() + kEntityBytes - bytesTaken_);
  }

  // Pages stand in CDATA sections, or escaped between two tags. Only "]]>" ends a section and only
  // "<" such a text, so their insides need not pass through the parser.
  bool parse() {
    std::string_view rest = input_;
    std::size_t from = 0;
    while (const auto passage = nextPassage(rest, from)) {
      const auto [begin, end, isSection] = *passage;
      if (!feed(rest.substr(0, begin), XML_FALSE)) {
        return false;
      }
      rest.remove_prefix(begin);
      const std::string_view inside = rest.substr(0, end - begin);
      if (!(isSection ? isInSection_ : isBehindTag())) {
        // It is part of a comment, say, which the parser may reread each time: look less often.
        from = 2 * begin;
      } else if (take(inside, isSection)) {
        rest.remove_prefix(inside.size());
        from = 0;
      } else if (isSection) {
        return false;
      } else {
        from = inside.size();
      }
    }
    return feed(rest, XML_TRUE);
  }

  /// What may be the inside of a section, or text between two tags.
  struct Passage {
    std::size_t begin;
    std::size_t end;
    bool isSection;
  };

  /// The first that is long enough to be worth the detour, of those that begin behind `from`.
  static std::optional<Passage> nextPassage(std::string_view text, std::size_t from) {
    constexpr std::string_view kSection = "<![CDATA[";
    constexpr std::size_t kWorthIt = 1024;
    while (true) {
      const std::size_t start = text.find('<', from);
      if (start == text.npos) {
        return std::nullopt;
      }
      const bool isSection = text.substr(start).starts_with(kSection);
      const std::size_t mark =
          isSection ? start + kSection.size() - 1 : text.find('>', start);  // its last byte
      const std::size_t end = isSection ? text.find("]]>", mark) : text.find('<', mark);
      if (end == text.npos) {
        return std::nullopt;
      }
      if (end > mark + kWorthIt) {
        return Passage{mark + 1, end, isSection};
      }
      from = end;
    }
  }

  /// False if the parser has to read it instead, or if no document may have it in a section.
  bool take(std::string_view inside, bool isSection) {
    std::string& text = document_.text_;
    const std::size_t size = text.size();
    const bool isTaken =
        isSection ? appendCharacters(text, inside) : appendBetweenTags(text, inside);
    if (!isTaken || isLeavingOut_) {
      text.resize(size);
    }
    if (isTaken) {
      bytesTaken_ += inside.size();
      limitEntities();
    }
    return isTaken;
  }

  /// Whether the last byte that the parser got ends a tag, inside the root element.
  bool isBehindTag() const { return endOfLastTag_ == bytesFed_ && !open_.empty(); }

  bool feed(std::string_view text, XML_Bool isLast) {
    const auto feedPiece = [this](std::string_view piece, XML_Bool isFinal) {
      bytesFed_ += piece.size();
      return XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), isFinal) ==
             XML_STATUS_OK;
    };
    for (; text.size() > pieceSize_; text.remove_prefix(pieceSize_)) {
      if (!feedPiece(text.substr(0, pieceSize_), XML_FALSE)) {
        return false;
      }
    }
    return feedPiece(text, isLast);
  }

  // A few declarations can give every element thousands.
  void countDefaultAttributes(const XML_Char** attributes) {
    for (attributes += XML_GetSpecifiedAttributeCount(parser_.get()); *attributes != nullptr;
         attributes += 2) {
      ++defaultAttributes_;
    }
  }

  void stop(const char* reason) {
    stopReason_ = reason;
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  /// Does the work of a callback. The parser is written in C: no exception may reach it. After it
  /// was stopped it may still call, which then has no effect.
  template <class Work>
  static void handle(void* userData, Work work) noexcept {
    auto& self = *static_cast<XmlReader*>(userData);
    try {
      if (self.stopReason_ == nullptr) {
        work(self);
      }
    } catch (const std::exception&) {
      self.stop("there is not enough memory");
    }
  }

  void noteEndOfTag() {
    endOfLastTag_ =
        sourceOffset() + static_cast<std::size_t>(XML_GetCurrentByteCount(parser_.get()));
  }

  void addElement(const XML_Char* name, const XML_Char** attributes) {
    noteEndOfTag();
    countDefaultAttributes(attributes);
    if (document_.elements_.size() == mostElements_ ||
        defaultAttributes_ > mostDefaultAttributes_) {
      stop("entities or default attributes add too much");
      return;
    }
    if (omission_ != nullptr && open_.size() == 2 && name == omission_->name && canBeLeftOut()) {
      isLeavingOut_ = true;
      document_.leftOut_.push_back(document_.elements_.size());
      XML_SetCharacterDataHandler(parser_.get(), nullptr);
    }
    open_.push_back(document_.elements_.size());
    document_.elements_.push_back({document_.names_.size(), document_.text_.size(), 0, 0});
    document_.names_ += name;
  }

  bool canBeLeftOut() {
    const XmlElement parent(document_, open_.back());
    if (parent.name() != omission_->parentName) {
      return false;
    }
    if (lastParent_ != open_.back()) {
      lastParent_ = open_.back();
      for (const std::size_t index : open_) {
        document_.elements_[index].subtreeEnd = document_.elements_.size();
      }
      isLastParentNeeded_ = omission_->isNeeded(document_.root(), parent);
    }
    return !isLastParentNeeded_;
  }

  void closeElement() {
    noteEndOfTag();
    XmlDocument::Element& element = document_.elements_[open_.back()];
    open_.pop_back();
    element.textEnd = document_.text_.size();
    element.subtreeEnd = document_.elements_.size();
    if (isLeavingOut_ && open_.size() == 2) {
      isLeavingOut_ = false;
      XML_SetCharacterDataHandler(parser_.get(), characterData);
    }
  }

  static XmlReader& reader(void* userData) { return *static_cast<XmlReader*>(userData); }

  static void XMLCALL startElement(void* userData, const XML_Char* name,
                                   const XML_Char** attributes) {
    handle(userData, [&](XmlReader& self) { self.addElement(name, attributes); });
  }

  static void XMLCALL endElement(void* userData, const XML_Char* /*name*/) {
    handle(userData, [](XmlReader& self) { self.closeElement(); });
  }

  static void XMLCALL characterData(void* userData, const XML_Char* text, int length) {
    handle(userData, [&](XmlReader& self) {
      self.document_.text_.append(text, static_cast<std::size_t>(length));
    });
  }

  static void XMLCALL startElementNoting(void* userData, const XML_Char* name,
                                         const XML_Char** attributes) {
    handle(userData, [&](XmlReader& self) {
      self.sourceMap_->addElement(self.sourceOffset());
      self.addElement(name, attributes);
    });
  }

  static void XMLCALL characterDataNoting(void* userData, const XML_Char* text, int length) {
    handle(userData, [&](XmlReader& self) {
      const std::string_view piece(text, static_cast<std::size_t>(length));
      const std::size_t source = self.sourceOffset();
      self.sourceMap_->addText(
          {self.document_.text_.size(), source, self.input_.substr(source, piece.size()) == piece});
      self.document_.text_ += piece;
    });
  }

  static void XMLCALL startSection(void* userData) { reader(userData).isInSection_ = true; }
  static void XMLCALL endSection(void* userData) { reader(userData).isInSection_ = false; }

  static void XMLCALL xmlDeclaration(void* userData, const XML_Char* version,
                                     const XML_Char* /*encoding*/, int /*standalone*/) {
    if (version == nullptr || !isVersionOne(version)) {
      reader(userData).stop("a version of XML other than 1.x");
    }
  }

  // From here on external entities are general ones, which are skipped. With a handler the parser
  // would search all entities for each.
  static void XMLCALL endDoctype(void* userData) {
    XML_SetExternalEntityRefHandler(reader(userData).parser_.get(), nullptr);
  }

  // After an unknown parameter entity the parser ignores all declarations.
  static void XMLCALL skippedEntity(void* userData, const XML_Char* /*name*/, int isParameter) {
    if (isParameter != 0) {
      reader(userData).stop("an unknown parameter entity");
    }
  }

  // Called for the parameter entities of a document type only. Each is read as a blank, so that the
  // declarations after it count, as they would with the entity at hand.
  static int XMLCALL readAsBlank(XML_Parser parser, const XML_Char* context,
                                 const XML_Char* /*base*/, const XML_Char* /*systemId*/,
                                 const XML_Char* /*publicId*/) {
    const ParserPointer entity(XML_ExternalEntityParserCreate(parser, context, kEncoding));
    return entity == nullptr ? XML_STATUS_ERROR : XML_Parse(entity.get(), " ", 1, XML_TRUE);
  }

  const ParserPointer parser_;
  const std::string_view input_;
  XmlSourceMap* const sourceMap_;      // null if nobody wants it
  const XmlOmission* const omission_;  // the same
  const std::size_t mostElements_;
  const std::size_t mostDefaultAttributes_;
  std::size_t pieceSize_ = 0;
  std::size_t bytesFed_ = 0;
  std::size_t endOfLastTag_ = 0;  // in the bytes fed
  std::size_t bytesTaken_ = 0;    // that the parser did not get
  std::size_t defaultAttributes_ = 0;
  bool isInSection_ = false;
  bool isLeavingOut_ = false;
  std::size_t lastParent_ = 0;  // of an element that could be left out; the root is none
  bool isLastParentNeeded_ = false;
  const char* stopReason_ = nullptr;  // null unless we stopped the parser
  XmlDocument document_;
  std::vector<std::size_t> open_;
};

std::optional<XmlDocument> readXml(std::string_view text, XmlSourceMap* sourceMap,
                                   const XmlOmission* omission, std::size_t pieceSize) {
  try {
    return XmlReader(text, sourceMap, omission).read(pieceSize);
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace qorix
