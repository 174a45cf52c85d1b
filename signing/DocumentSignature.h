#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qorix {

/// A document that ends with a signature: the comment "<!-- qorix-signature: BASE64 -->", behind
/// which nothing but white space stands.
struct SignedDocument {
  std::string_view text;       // what is signed: every byte before the comment
  std::string_view signature;  // in base64
};

/// Divides a document. Nullopt if it does not end with such a comment.
std::optional<SignedDocument> dividedDocument(std::string_view document);

/// The comment for a signature of 64 bytes.
std::string signatureComment(std::string_view signature);

/// Why hosts with these public keys, each in base64, refuse the document, as the end of a sentence
/// about it. Nullopt if the owner of one of the keys has signed it. What is no key counts for
/// nothing.
std::optional<std::string> signatureFault(std::string_view document,
                                          const std::vector<std::string>& publicKeys);

}  // namespace qorix
