#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definition/XmlDocument.h"

// XML 1.0, by production and constraint. Where the library means to differ, the table says so:
// - names are those up to the fourth edition (appendix B), as the fifth refuses no name of these;
// - a text is UTF-8, whatever it declares (4.3.3 lets what delivers it decide);
// - a reference to an undeclared parameter entity is refused. The standard calls it invalid only;
//   but what stands behind it could not be trusted (5.1).

namespace qorix {
namespace {

using namespace std::string_literals;

struct XmlCase {
  const char* rule;
  std::string text;
  bool isRead;
};

const std::vector<XmlCase> kDocumentCases = {
    {"[1] document", "<r/>", true},
    {"[1] document", "\t\r\n <r/>\t\r\n ", true},
    {"[1] document", "<!--c--><?p?><r/><!--c--><?p?>", true},
    {"[1] document", "<r/><r/>", false},
    {"[1] document", "<r/>a", false},
    {"[1] document", "<r/>&#32;", false},
    {"[1] document", "a<r/>", false},
    {"[1] document", "<!--c-->", false},
    {"[1] document", "<r/><!DOCTYPE r>", false},
    {"[1] document", "<![CDATA[ ]]><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0'?><r/>", true},
    {"[23] XMLDecl", "<?xml version=\"1.0\" encoding='utf-8' standalone='yes' ?><r/>", true},
    {"[23] XMLDecl", "<?xml\nversion\t=\r'1.0'?><r/>", true},
    {"[23] XMLDecl", "<?xml version='1.0' standalone='yes' encoding='UTF-8'?><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0'encoding='UTF-8'?><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0' standalone='YES'?><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0' valid='no'?><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0'><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0'? ><r/>", false},
    {"[23] XMLDecl", "<?xml standalone='yes'?><r/>", false},
    {"[23] XMLDecl", "<?XML version='1.0'?><r/>", false},
    {"[23] XMLDecl", "\n<?xml version='1.0'?><r/>", false},
    {"[23] XMLDecl", "<!--c--><?xml version='1.0'?><r/>", false},
    {"[23] XMLDecl", "<?xml version='1.0'?><?xml version='1.0'?><r/>", false},
    {"[24] VersionInfo", "<?xml version='1.0\"?><r/>", false},
    {"[24] VersionInfo", "<?xml version=1.0?><r/>", false},
    {"[26] VersionNum", "<?xml version='1.27'?><r/>", true},
    {"[26] VersionNum", "<?xml version=' 1.0'?><r/>", false},
    {"[26] VersionNum", "<?xml version='1.0 '?><r/>", false},
    {"[26] VersionNum", "<?xml version='1'?><r/>", false},
    {"[26] VersionNum", "<?xml version='1.0a'?><r/>", false},
    {"[81] EncName", "<?xml version='1.0' encoding='x-any.thing_1'?><r/>", true},
    {"[81] EncName", "<?xml version='1.0' encoding='8859'?><r/>", false},
    {"[81] EncName", "<?xml version='1.0' encoding='a b'?><r/>", false},
    {"[81] EncName", "<?xml version='1.0' encoding='\xC3\xA9'?><r/>", false},
    {"4.3.3 encodings", "\xEF\xBB\xBF<r/>", true},
    {"4.3.3 encodings", "\xEF\xBB\xBF\xEF\xBB\xBF<r/>", false},
    {"4.3.3 encodings", "<?xml version='1.0' encoding='US-ASCII'?><r>\xC3\xA9</r>", true},
    {"4.3.3 encodings", "<\0r\0/\0>\0"s, false},
};

// What stands in the root element.
const std::vector<XmlCase> kContentCases = {
    {"[2] Char", "\t\n\r \x7F\xC2\x80\xC2\x9F", true},
    {"[2] Char", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", true},
    {"[2] Char", "\x01", false},
    {"[2] Char", "\x08", false},
    {"[2] Char", "\x0B", false},
    {"[2] Char", "\x0C", false},
    {"[2] Char", "\x1F", false},
    {"[2] Char", "\0"s, false},
    {"[2] Char", "\xED\xA0\x80", false},
    {"[2] Char", "\xED\xBF\xBF", false},
    {"[2] Char", "\xEF\xBF\xBE", false},
    {"[2] Char", "\xEF\xBF\xBF", false},
    {"[2] Char", "\xF4\x90\x80\x80", false},
    {"[14] CharData", "]]", true},
    {"[14] CharData", "]] >", true},
    {"[14] CharData", ">", true},
    {"[14] CharData", "\"'", true},
    {"[14] CharData", "]]&gt;", true},
    {"[14] CharData", "]]>", false},
    {"[14] CharData", "]]]>", false},
    {"[14] CharData", "<", false},
    {"[14] CharData", "a < b", false},
    {"[14] CharData", "&", false},
    {"[14] CharData", "a & b", false},
    {"[15] Comment", "<!---->", true},
    {"[15] Comment", "<!-- - -->", true},
    {"[15] Comment", "<!-- <a> & ]]> <? -->", true},
    {"[15] Comment", "<!--->", false},
    {"[15] Comment", "<!--->-->", true},
    {"[15] Comment", "<!-- -- -->", false},
    {"[15] Comment", "<!-- --->", false},
    {"[15] Comment", "<!- -->", false},
    {"[15] Comment", "<! -- -->", false},
    {"[15] Comment", "<!-- -- >", false},
    {"[15] Comment", "<!--\x01-->", false},
    {"[15] Comment", "<!--\xFF-->", false},
    {"[16] PI", "<?p?>", true},
    {"[16] PI", "<?p <a> & ]]> ? > -- ?>", true},
    {"[16] PI", "<?p ?\?>", true},
    {"[16] PI", "<?xmlp?>", true},
    {"[16] PI", "<?xml-p x?>", true},
    {"[16] PI", "<? p?>", false},
    {"[16] PI", "<?\?>", false},
    {"[16] PI", "<?p>", false},
    {"[16] PI", "<?p/?>", false},
    {"[16] PI", "<?1?>", false},
    {"[16] PI", "<?p \x02?>", false},
    {"[17] PITarget", "<?xml?>", false},
    {"[17] PITarget", "<?XML x?>", false},
    {"[17] PITarget", "<?xMl x?>", false},
    {"[18] CDSect", "<![CDATA[]]>", true},
    {"[18] CDSect", "<![CDATA[]]]]>", true},
    {"[18] CDSect", "<![CDATA[<a>&b;<!--]]>", true},
    {"[18] CDSect", "<![CDATA[ ]]", false},
    {"[18] CDSect", "<![CDATA[ ]>", false},
    {"[18] CDSect", "<![ CDATA[]]>", false},
    {"[18] CDSect", "<![CDATA []]>", false},
    {"[18] CDSect", "<![cdata[]]>", false},
    {"[18] CDSect", "<[CDATA[]]>", false},
    {"[18] CDSect", "<![CDATA[<![CDATA[]]>]]>", false},
    {"[18] CDSect", "<![INCLUDE[]]>", false},
    {"[28] doctypedecl", "<!DOCTYPE r>", false},
    {"[39] element", "<a></a>", true},
    {"[39] element", "<a/><a />", true},
    {"[39] element", "<a><b></b></a>", true},
    {"[39] element", "<a><b></a></b>", false},
    {"[39] element", "<a>", false},
    {"[39] element", "</a>", false},
    {"[39] element", "<a></A>", false},
    {"[39] element", "<a></ a>", false},
    {"[39] element", "< a/>", false},
    {"[40] STag", "<a\n></a\t>", true},
    {"[40] STag", "<a b='1' c=\"2\"/>", true},
    {"[40] STag", "<a b='1'\n\tc='2' />", true},
    {"[40] STag", "<a b='1'c='2'/>", false},
    {"[40] STag", "<a,b='1'/>", false},
    {"[40] STag", "<a / >", false},
    {"[40] STag", "<a/b='1'>", false},
    {"[40] STag WFC unique", "<a b='1' b='1'/>", false},
    {"[40] STag WFC unique", "<a b='1' B='1'/>", true},
    {"[41] Attribute", "<a b = '1'/>", true},
    {"[41] Attribute", "<a b/>", false},
    {"[41] Attribute", "<a b=/>", false},
    {"[41] Attribute", "<a b=1/>", false},
    {"[41] Attribute", "<a ='1'/>", false},
    {"[41] Attribute", "<a 'b'='1'/>", false},
    {"[42] ETag", "<a></a b='1'>", false},
    {"[42] ETag", "<a></a/>", false},
    {"[10] AttValue", "<a b='\"'/><a b=\"'\"/>", true},
    {"[10] AttValue", "<a b='>]]>'/>", true},
    {"[10] AttValue", "<a b='\n\t'/>", true},
    {"[10] AttValue", "<a b='&lt;&#60;'/>", true},
    {"[10] AttValue", "<a b='1\"/>", false},
    {"[10] AttValue", "<a b='''/>", false},
    {"[10] AttValue", "<a b='<'/>", false},
    {"[10] AttValue", "<a b='&'/>", false},
    {"[10] AttValue", "<a b='&lt'/>", false},
    {"[10] AttValue", "<a b='\x01'/>", false},
    {"[66] CharRef", "&#9;&#10;&#13;&#32;&#x20;&#x0020;", true},
    {"[66] CharRef", "&#xaF;&#x10FFFF;&#1114111;&#xD7FF;&#xE000;&#xFFFD;", true},
    {"[66] CharRef", "&#000000000000000000000065;", true},
    {"[66] CharRef", "&#0;", false},
    {"[66] CharRef", "&#x0;", false},
    {"[66] CharRef", "&#8;", false},
    {"[66] CharRef", "&#11;", false},
    {"[66] CharRef", "&#31;", false},
    {"[66] CharRef", "&#xD800;", false},
    {"[66] CharRef", "&#xDFFF;", false},
    {"[66] CharRef", "&#xFFFE;", false},
    {"[66] CharRef", "&#65535;", false},
    {"[66] CharRef", "&#x110000;", false},
    {"[66] CharRef", "&#4294967361;", false},
    {"[66] CharRef", "&#x100000041;", false},
    {"[66] CharRef", "&#18446744073709551681;", false},
    {"[66] CharRef", "&#;", false},
    {"[66] CharRef", "&#x;", false},
    {"[66] CharRef", "&#X41;", false},
    {"[66] CharRef", "&#4a;", false},
    {"[66] CharRef", "&#xg;", false},
    {"[66] CharRef", "&#65", false},
    {"[66] CharRef", "& #65;", false},
    {"[66] CharRef", "&#-65;", false},
    {"[68] EntityRef", "&lt;&gt;&amp;&apos;&quot;", true},
    {"[68] EntityRef", "&LT;", false},
    {"[68] EntityRef", "&nbsp;", false},
    {"[68] EntityRef", "&lt", false},
    {"[68] EntityRef", "&lt ;", false},
    {"[68] EntityRef", "& lt;", false},
    {"[68] EntityRef", "&;", false},
    {"[68] EntityRef", "&1;", false},
    {"[69] PEReference", "%p;", true},
    {"[32] standalone", "<?xml version='1.0'?>", false},
};

// What stands between the brackets of a document type, and what stands in the root element.
struct SubsetCase {
  const char* rule;
  std::string subset;
  std::string content;
  bool isRead;
};

const std::vector<SubsetCase> kSubsetCases = {
    {"[28b] intSubset", "", "", true},
    {"[28b] intSubset", " \n<!--c--><?p?>\t", "", true},
    {"[28b] intSubset", "text", "", false},
    {"[28b] intSubset", "<r/>", "", false},
    {"[28b] intSubset", "&lt;", "", false},
    {"[28b] intSubset", "<![CDATA[]]>", "", false},
    {"[28b] intSubset", "<!DOCTYPE r>", "", false},
    {"[28b] intSubset", "<?xml version='1.0'?>", "", false},
    {"[45] elementdecl", "<!ELEMENT r ANY><!ELEMENT a EMPTY>", "", true},
    {"[45] elementdecl", "<!ELEMENT r(a)>", "", false},
    {"[45] elementdecl", "<!ELEMENT r any>", "", false},
    {"[45] elementdecl", "<!ELEMENT r>", "", false},
    {"[45] elementdecl", "<!ELEMENT r ANY", "", false},
    {"[45] elementdecl", "<!element r ANY>", "", false},
    {"[45] elementdecl", "<!ELEMENT r EMPTY ANY>", "", false},
    {"[47] children", "<!ELEMENT r (a,(b|c)*,d?)+>", "", true},
    {"[47] children", "<!ELEMENT r (a,b|c)>", "", false},
    {"[47] children", "<!ELEMENT r ()>", "", false},
    {"[47] children", "<!ELEMENT r (a b)>", "", false},
    {"[47] children", "<!ELEMENT r (a,)>", "", false},
    {"[47] children", "<!ELEMENT r (a) *>", "", false},
    {"[47] children", "<!ELEMENT r (a&b)>", "", false},
    {"[51] Mixed", "<!ELEMENT r (#PCDATA)><!ELEMENT a (#PCDATA|b)*>", "", true},
    {"[51] Mixed", "<!ELEMENT r (#PCDATA)*>", "", true},
    {"[51] Mixed", "<!ELEMENT r (#PCDATA|b)>", "", false},
    {"[51] Mixed", "<!ELEMENT r (b|#PCDATA)*>", "", false},
    {"[51] Mixed", "<!ELEMENT r (#PCDATA,b)*>", "", false},
    {"[51] Mixed", "<!ELEMENT r #PCDATA>", "", false},
    {"[52] AttlistDecl", "<!ATTLIST r>", "", true},
    {"[52] AttlistDecl", "<!ATTLIST r a CDATA #IMPLIED b ID #REQUIRED>", "", true},
    {"[52] AttlistDecl", "<!ATTLIST r a CDATA>", "", false},
    {"[52] AttlistDecl", "<!ATTLIST r a #IMPLIED>", "", false},
    {"[52] AttlistDecl", "<!ATTLIST r a cdata #IMPLIED>", "", false},
    {"[59] Enumeration", "<!ATTLIST r a (x|1) 'x'>", "", true},
    {"[59] Enumeration", "<!ATTLIST r a (x,y) 'x'>", "", false},
    {"[59] Enumeration", "<!ATTLIST r a () #IMPLIED>", "", false},
    {"[59] Enumeration", "<!ATTLIST r a ('x') #IMPLIED>", "", false},
    {"[58] NotationType", "<!NOTATION n SYSTEM ''><!ATTLIST r a NOTATION (n) #IMPLIED>", "", true},
    {"[58] NotationType", "<!ATTLIST r a NOTATION n #IMPLIED>", "", false},
    {"[60] DefaultDecl", "<!ATTLIST r a CDATA #FIXED 'v'>", "", true},
    {"[60] DefaultDecl", "<!ATTLIST r a CDATA #FIXED>", "", false},
    {"[60] DefaultDecl", "<!ATTLIST r a CDATA 'v' #FIXED>", "", false},
    {"[60] DefaultDecl", "<!ATTLIST r a CDATA '<'>", "", false},
    {"[60] DefaultDecl", "<!ATTLIST r a CDATA '&undeclared;'>", "", false},
    {"[70] EntityDecl", "<!ENTITY e 'v'>", "&e;", true},
    {"[70] EntityDecl", "<!ENTITY e ''>", "&e;", true},
    {"[70] EntityDecl", "<!ENTITY e>", "", false},
    {"[70] EntityDecl", "<!ENTITY e v>", "", false},
    {"[70] EntityDecl", "<!ENTITY 'e' 'v'>", "", false},
    {"[70] EntityDecl", "<!ENTITY e'v'>", "", false},
    {"[70] EntityDecl", "<!ENTITY e 'v' 'w'>", "", false},
    {"[70] EntityDecl", "<!entity e 'v'>", "", false},
    {"[70] EntityDecl", "<!ENTITY e 'v\">", "", false},
    {"[71] PEDecl", "<!ENTITY % p 'v'>", "%p;", true},
    {"[71] PEDecl", "<!ENTITY %p 'v'>", "", false},
    {"[71] PEDecl", "<!ENTITY % p SYSTEM 'x' NDATA n>", "", false},
    {"[75] ExternalID", "<!ENTITY e SYSTEM 'x'>", "&e;", true},
    {"[75] ExternalID", "<!ENTITY e PUBLIC '-//x' 'x'>", "&e;", true},
    {"[75] ExternalID", "<!ENTITY e PUBLIC 'x'>", "", false},
    {"[75] ExternalID", "<!ENTITY e SYSTEM>", "", false},
    {"[75] ExternalID", "<!ENTITY e SYSTEM x>", "", false},
    {"[75] ExternalID", "<!ENTITY e system 'x'>", "", false},
    {"[12] PubidLiteral", "<!ENTITY e PUBLIC '-()+,./:=?;!*#@$_% 1a' 'x'>", "", true},
    {"[12] PubidLiteral", "<!ENTITY e PUBLIC 'a\tb' 'x'>", "", false},
    {"[12] PubidLiteral", "<!ENTITY e PUBLIC '{}' 'x'>", "", false},
    {"[76] NDataDecl", "<!NOTATION n SYSTEM ''><!ENTITY e SYSTEM 'x' NDATA n>", "", true},
    {"[76] NDataDecl", "<!ENTITY e 'x' NDATA n>", "", false},
    {"[76] NDataDecl", "<!ENTITY e SYSTEM 'x'NDATA n>", "", false},
    {"[82] NotationDecl", "<!NOTATION n PUBLIC 'x'>", "", true},
    {"[82] NotationDecl", "<!NOTATION n>", "", false},
    {"[82] NotationDecl", "<!NOTATION n 'x'>", "", false},
    {"[9] EntityValue", "<!ENTITY e '&undeclared;'>", "", true},
    {"[9] EntityValue", "<!ENTITY e '<a>'>", "", true},
    {"[9] EntityValue", "<!ENTITY e '&'>", "", false},
    {"[9] EntityValue", "<!ENTITY e '%'>", "", false},
    {"[9] EntityValue", "<!ENTITY e '&#0;'>", "", false},
    {"WFC PEs in subset", "<!ENTITY % p 'v'><!ENTITY e '%p;'>", "", false},
    {"WFC PEs in subset", "<!ENTITY % p 'ANY'><!ELEMENT r %p;>", "", false},
    {"WFC PE between", "<!ENTITY % p '<!ENTITY e \"v\">'>%p;", "&e;", true},
    {"WFC PE between", "<!ENTITY % p '<!ENTITY e'>%p; 'v'>", "", false},
    {"[61] conditionalSect", "<![INCLUDE[<!ENTITY e 'v'>]]>", "", false},
    {"[61] conditionalSect", "<![IGNORE[]]>", "", false},
    {"WFC declared", "<!ENTITY e 'v'>", "&f;", false},
    {"WFC declared", "<!ENTITY e '&f;'>", "&e;", false},
    {"WFC declared", "<!ENTITY e '&f;'><!ENTITY f 'v'>", "&e;", true},
    {"WFC declared", "<!ENTITY % p ''>%p;", "&f;", true},
    {"VC declared, refused", "%p;", "", false},
    {"WFC parsed", "<!NOTATION n SYSTEM ''><!ENTITY e SYSTEM 'x' NDATA n>", "&e;", false},
    {"WFC recursion", "<!ENTITY e '&e;'>", "&e;", false},
    {"WFC recursion", "<!ENTITY e '&f;'><!ENTITY f '&e;'>", "&e;", false},
    {"WFC recursion", "<!ENTITY e '&e;'>", "", true},
    {"WFC external", "<!ENTITY e SYSTEM 'x'>", "<a b='&e;'/>", false},
    {"WFC external", "<!ENTITY e SYSTEM 'x'><!ENTITY f '&e;'>", "<a b='&f;'/>", false},
    {"WFC no <", "<!ENTITY e '&#60;'>", "<a b='&e;'/>", false},
    {"WFC no <", "<!ENTITY e '&#38;#60;'>", "<a b='&e;'/>&e;", true},
    {"WFC no <", "<!ENTITY e '&lt;'>", "<a b='&e;'/>", true},
    {"4.3.2 well-formed", "<!ENTITY e '<a>v</a>'>", "&e;", true},
    {"4.3.2 well-formed", "<!ENTITY e '<a>'>", "&e;</a>", false},
    {"4.3.2 well-formed", "<!ENTITY e '</a>'>", "<a>&e;", false},
    {"4.3.2 well-formed", "<!ENTITY e '<!--'>", "&e;-->", false},
    {"4.3.2 well-formed", "<!ENTITY e '&#38;'>", "&e;", false},
    {"4.3.2 well-formed", "<!ENTITY e '&#38;amp'>", "&e;;", false},
    {"4.3.2 well-formed", "<!ENTITY e ']]&#62;'>", "&e;", false},
    {"4.6 predefined", "<!ENTITY lt '&#38;#60;'><!ENTITY amp '&#38;#38;'>", "&lt;&amp;", true},
    {"4.6 predefined", "<!ENTITY gt '&#62;'><!ENTITY apos \"'\">", "&gt;&apos;", true},
};

// Names: {what XML 1.0 up to the fourth edition says of them}.
const std::vector<XmlCase> kNameCases = {
    {"[5] Name", "a", true},
    {"[5] Name", "_", true},
    {"[5] Name", ":", true},
    {"[5] Name", "a:b:c", true},
    {"[5] Name", "A.-_1:", true},
    {"[5] Name", "xml", true},  // reserved, but well formed
    {"[85] BaseChar", "\xC3\x80", true},
    {"[85] BaseChar", "\xC3\x97", false},
    {"[85] BaseChar", "\xC3\xB7", false},
    {"[85] BaseChar", "\xC4\xB1", true},
    {"[85] BaseChar", "\xC4\xB2", false},
    {"[85] BaseChar", "\xCE\xB1", true},
    {"[85] BaseChar", "\xD7\x90", true},
    {"[85] BaseChar", "\xE1\x84\x80", true},
    {"[85] BaseChar", "\xEA\xB0\x80", true},
    {"[85] BaseChar", "\xE1\x9A\x80", false},
    {"[86] Ideographic", "\xE4\xB8\x80", true},
    {"[86] Ideographic", "\xE3\x80\x87", true},
    {"[86] Ideographic", "\xE9\xBE\xA6", false},
    {"[86] Ideographic", "\xF0\xA0\x80\x80", false},
    {"[87] CombiningChar", "a\xCC\x80", true},
    {"[87] CombiningChar", "\xCC\x80", false},
    {"[88] Digit", "a\xD9\xA0", true},
    {"[88] Digit", "\xD9\xA0", false},
    {"[89] Extender", "a\xC2\xB7", true},
    {"[89] Extender", "\xC2\xB7", false},
    {"[5] Name", "1", false},
    {"[5] Name", "-a", false},
    {"[5] Name", ".a", false},
    {"[5] Name", "a$", false},
    {"[5] Name", "a\\", false},
    {"[5] Name", "a!", false},
    {"[5] Name", "a\xC2\xA0", false},
    {"[5] Name", "\xE2\x82\xAC", false},
    {"[5] Name", "a\xE2\x80\xBF", false},
    {"[5] Name", "a\xFF", false},
};

void expectReading(const std::string& rule, const std::string& document, bool isRead) {
  EXPECT_EQ(XmlDocument::parse(document).has_value(), isRead) << rule << ": " << document;
  EXPECT_EQ(XmlDocument::parse(document, 1).has_value(), isRead) << rule << ": " << document;
}

TEST(XmlConformanceTest, documentsAreThoseOfTheStandard) {
  for (const auto& [rule, text, isRead] : kDocumentCases) {
    expectReading(rule, text, isRead);
  }
}

TEST(XmlConformanceTest, contentIsThatOfTheStandard) {
  for (const auto& [rule, text, isRead] : kContentCases) {
    expectReading(rule, "<r>" + text + "</r>", isRead);
    expectReading(rule, "<r><a/>b" + text + "\n<c></c></r>", isRead);
  }
}

std::string withSubset(const std::string& subset, const std::string& content) {
  return "<!DOCTYPE r [" + subset + "]><r>" + content + "</r>";
}

TEST(XmlConformanceTest, documentTypesAreThoseOfTheStandard) {
  for (const auto& [rule, subset, content, isRead] : kSubsetCases) {
    expectReading(rule, withSubset(subset, content), isRead);
  }
}

std::string emptyElement(const std::string& name) { return "<" + name + "></" + name + ">"; }

TEST(XmlConformanceTest, namesAreThoseOfTheStandard) {
  for (const auto& [rule, name, isRead] : kNameCases) {
    expectReading(rule, emptyElement(name), isRead);
    expectReading(rule, "<r " + name + "='v'/>", isRead);
    expectReading(rule, withSubset("<!ENTITY " + name + " 'v'>", "&" + name + ";"), isRead);
  }
}

}  // namespace
}  // namespace qorix
