#include <string>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kAnswer = "function cocoa_post_promo_app_info(host, ids, flags) {}";

class PageFindingsTest : public AdcheckTest {
 protected:
  static std::string documentOf(const std::string& page) {
    AdDocument document;
    document.page = page;
    return document.text();
  }
  void expectNone(const std::string& page) {
    EXPECT_THAT(warnings(documentOf(page)), IsEmpty()) << page;
  }
  /// That one thing is found: at the first place of `part`, in words that hold these.
  void expectWarning(const std::string& page, const std::string& part, const std::string& words) {
    const std::string document = documentOf(page);
    EXPECT_THAT(warnings(document),
                ElementsAre(testing::AllOf(testing::StartsWith(placeOf(part, document) + ": "),
                                           HasSubstr(words))))
        << page;
  }
  static std::string link(const std::string& address) {
    return "<a href=\"" + address + "\">x</a>";
  }
  static std::string script(const std::string& code) { return "<script>" + code + "</script>"; }
  static std::string listFunction(const std::string& body) {
    return script("function cocoa_obtain_promo_app_ids() {" + body + "}\n" + kAnswer);
  }
};

TEST_F(PageFindingsTest, aGoodPageHasNone) {
  expectNone(R"(<!DOCTYPE html>
<!-- <a class="ZAMOPENOUT" href="?tools=12"> -->
<style>a[href="?tools=12"] { color: red }</style>
<title>about <a href="?tools=12"></title>
<a class="button zamopeniap" href='https://www.example.com/buy?zamopeniap=1'>Buy</a>
<a class=zamopenout href=https://www.example.com/#top>Read</a>
<a class="ZamOpenOut" href="https://www.example.com/?ZAMOPENOUT=1">Read</a>
<a href="https://www.example.com/?a=tools&amp;zamopenout=1#more">Read</a>
<a href="https://apps.example.com/app?id=7&LS=1">App Store</a>
<a href="https://www.example.com/tools/12?tools=2#x">Plain</a>
<a href="/close"><img id="cocoa_close_web" alt="x"></a>
<div id="cocoa_close_web_area">x</div> <a href="/"><div id="cocoa_close_web"></div></a>
<A HREF="/"><P><IMG><BR>Close <IMG ID=cocoa_close_web></A>
<a href="/"><span class="zamopenout">Read</span> <img class=zamopenout></a>
<a href="/" class="zamopenout"><b class="zamopenout">Read</b><br>more</a>
<a href="/?zamopenout=1" class="zamopenout"><img></a>
<div class="zamopenout-box"><a href="/" target="_blank">Plain</a></div>
<a href="/?tools=2" target="_top">Plain</a><form action="/?tools=12"></form>
<template><a class="ZAMOPENOUT" href="?tools=12"></a></template>
<noscript><a class="ZAMOPENOUT" href="?tools=12"></a></noscript>
<map><area href="/" id="cocoa_close_web"></map>
a < b <3
<script>
  // cocoa_obtain_promo_app_ids returns [ "a" ]
  var text = '<a href="?tools=12">', quote = "it's";
  function cocoa_obtain_promo_app_ids() {
    var ids = ["com.a.one", 'com.b.two'];
    console.log("it's here");
    return ids.join(",");
  }
  function cocoa_post_promo_app_info(host, ids, flags) { return ["a"]; }
</script>)");
}

TEST_F(PageFindingsTest, aClassInWrongLetterCase) {
  expectWarning("<a class=\"big ZAMOPENOUT\" href=\"https://x.example/\">x</a>", "big ZAM",
                "letter case counts in \"zamopenout\"");
  expectWarning("<img class=ZamOpenIAP>", "ZamOpenIAP", "letter case counts in \"zamopeniap\"");
}

TEST_F(PageFindingsTest, aClassThatNoClickFinds) {
  const std::string inside =
      "a click on an element inside this one does not find its class \"zamopenout\": write "
      "\"zamopenout=1\" into the link's query";
  expectWarning("<a class=\"zamopenout\" href=\"/\"><img></a>", "zamopenout", inside);
  expectWarning("<A CLASS=zamopenout HREF=/>Read<BR><SPAN>more</SPAN></A>", "zamopenout", inside);
  expectWarning("<a href=\"/\"><div class=\"big zamopenout\"><p>x</p></div></a>", "big zamopenout",
                inside);
  const std::string noLink =
      "this \"zamopeniap\" lies in no link (a with href): clicks on it do nothing";
  expectWarning("<div class=\"zamopeniap\">Buy</div>", "zamopeniap", noLink);
  expectWarning("<a class=\"zamopeniap\">Buy</a>", "zamopeniap", noLink);
  expectWarning("<a href=\"/\">x</a><b class=\"zamopeniap\">Buy</b>", "zamopeniap", noLink);
  expectWarning("<a href=\"/\"><svg><path/></svg></a><b class=\"zamopeniap\">Buy</b>", "zamopeniap",
                noLink);
}

TEST_F(PageFindingsTest, marksWhereNothingLooksForThem) {
  const std::string newWindow = "marks do nothing in a link for a new window: leave the target out";
  expectWarning("<a target=\"_blank\" href=\"https://x.example/?zamopenout=1\">x</a>", "_blank",
                newWindow);
  expectWarning("<a target=_BLANK class=zamopeniap href=\"https://x.example/\">x</a>", "_BLANK",
                newWindow);
  expectWarning("<a target=\"_blank\" href=\"https://x.example/?a=1&ls=1\">x</a>", "_blank",
                newWindow);
  expectWarning("<form action=\"/?zamopenout=1\"><button>x</button></form>", "/?zamopenout",
                "marks in the address of a form do nothing: only clicks on links count");
}

TEST_F(PageFindingsTest, referencesInAttributesAreRead) {
  expectNone(link("https://x.example/?a=1&#38;zamopenout&#61;1"));
  expectNone("<a class=\"zam&#x6F;penout\" href=\"/\">x</a>");
  expectWarning("<a class=\"ZAM&#X4f;PENOUT\" href=\"/\">x</a>", "ZAM&#", "letter case counts");
  expectNone(link("https://x.example/?a=&#;&#x;&#xx;&#99999999999;&#233;&amp"));
}

TEST_F(PageFindingsTest, aMarkOutsideOfTheQuery) {
  expectWarning(link("https://x.example/a#zamopenout=1"), "https://x.example",
                "\"zamopenout=1\" stands in the link's fragment");
  expectWarning(link("https://x.example/a?b=1#ls=1"), "https://x.example",
                "\"ls=1\" stands in the link's fragment");
  expectWarning(link("https://x.example/a&zamopeniap=1"), "https://x.example",
                "\"zamopeniap=1\" stands in the link's path");
  expectNone(link("https://x.example/tools=1"));
  expectNone("<a class=zamopenout href=\"https://x.example/#zamopenout=1\">x</a>");
}

TEST_F(PageFindingsTest, aMarkThatIsMisspelled) {
  expectWarning(link("https://x.example/?zamopenout = 1"), "https://x.example",
                "spelled \"zamopenout=1\", without blanks");
  expectWarning(link("https://x.example/?zamopenout%20=%201"), "https://x.example",
                "spelled \"zamopenout=1\", without blanks");
  expectWarning(link("https://x.example/?zamopeniap=yes"), "https://x.example",
                "this mark cannot match: it is spelled \"zamopeniap=1\"");
  expectWarning(link("https://x.example/?a=b&amp;zamopenout"), "https://x.example",
                "this mark cannot match: it is spelled \"zamopenout=1\"");
  expectNone(link("https://x.example/zamopenout.html?zamopenout=0"));
}

TEST_F(PageFindingsTest, aMarkThatIsFoundByAccident) {
  expectWarning(link("https://x.example/?a=b&tools=12"), "https://x.example",
                "\"ls=1\" is also found in \"tools=12\": the link opens the App Store");
  expectWarning(link("https://x.example/?LS=10"), "https://x.example",
                "\"ls=1\" is also found in \"ls=10\"");
  expectWarning(link("https://x.example/?nozamopenout=1"), "https://x.example",
                "\"zamopenout=1\" is also found in \"nozamopenout=1\"");
  expectNone(link("https://x.example/?tools=12&ls=1"));
  expectNone(link("https://x.example/?tools=2"));
}

TEST_F(PageFindingsTest, aCloseControlThatDoesNotClose) {
  expectWarning("<a href=\"/\"><img id=\"Cocoa_Close_Web\"></a>", "Cocoa_Close_Web",
                "this id cannot match: it is \"cocoa_close_web\"");
  expectWarning("<img id=\" cocoa_close_web\">", " cocoa_close_web", "this id cannot match");
  expectWarning("<a href=\"/\" id=\"cocoa_close_web\">Close</a>", "cocoa_close_web",
                "a click on this close control's text does not close");
  expectWarning("<A HREF=/ ID='cocoa_close_web'>\nClose\n</A>", "cocoa_close_web",
                "text does not close");
  for (const std::string inside : {"<img>", "<span>x</span>", "x <b>y</b>"}) {
    expectWarning("<a id=\"cocoa_close_web\" href=\"/\">" + inside + "</a>", "cocoa_close_web",
                  "a click on an element inside this close control does not close");
  }
  expectWarning("<a href=\"/\"><svg id=\"cocoa_close_web\"><path/></svg></a>", "cocoa_close_web",
                "a click on an element inside this close control does not close");
  for (const std::string page :
       {"<img id=\"cocoa_close_web\">", "<button id=\"cocoa_close_web\"><img></button>",
        "<a id=\"cocoa_close_web\">x</a>", "<a href=\"/\">x</a><img id=\"cocoa_close_web\">"}) {
    expectWarning(page, "cocoa_close_web", "this close control lies in no link");
  }
}

TEST_F(PageFindingsTest, aBridgeOfWhichHalfIsMissing) {
  expectWarning(script("function cocoa_obtain_promo_app_ids() { return \"a\"; }"),
                "cocoa_obtain_promo_app_ids",
                "defines cocoa_obtain_promo_app_ids, but not cocoa_post_promo_app_info");
  expectWarning(script("window.cocoa_post_promo_app_info = (a, b, c) => {};"),
                "cocoa_post_promo_app_info",
                "defines cocoa_post_promo_app_info, but not cocoa_obtain_promo_app_ids");
  expectWarning(script("// function cocoa_\n") + "<SCRIPT>" + kAnswer + "</SCRIPT>",
                "cocoa_post_promo_app_info", "but not cocoa_obtain_promo_app_ids");
  // The other half may come from elsewhere.
  expectNone(script(kAnswer) + "<script src=\"list.js\"></script>");
  expectNone(script(kAnswer + "\nwindow['cocoa_obtain_promo_app_ids'] = list;"));
  expectNone(script("var x = typeof cocoa_obtain_promo_app_ids;"));
  expectNone(script("const cocoa_obtain_promo_app_ids = () => 'a';\n" + kAnswer));
}

TEST_F(PageFindingsTest, aListThatIsNoText) {
  for (const auto* body :
       {"return [\"a\", \"b\"];", "return [\n'a',\n'b'\n]\n", "return ['a'];",
        "if (x) { return ['a']; } return '';", "const ids = ['a', 'b']; return ids;",
        "var f = x => x; return ['a'];"}) {
    EXPECT_THAT(warnings(documentOf(listFunction(body))),
                ElementsAre(HasSubstr("cocoa_obtain_promo_app_ids returns a list")))
        << body;
  }
  expectWarning(script("let cocoa_obtain_promo_app_ids = () => ['a'];\n" + kAnswer), "['a']",
                "returns a list");
  expectWarning(script("cocoa_obtain_promo_app_ids = function () { return ['a'] };\n" + kAnswer),
                "['a']", "returns a list");
  for (const auto* body :
       {"return ['a', 'b'].join(',');", "return ['a', 'b']\n  .join(',');", "return 'a,b';",
        "return ids.map(function (x) { return [x]; }).join();", "return [1, 2] + '';",
        "return ids.map(x => { return [x]; }).join();", "return String(['a']);", "return;", "",
        "let ids = ['a']; ids = ids.join(); return ids;", "return ids;", "return (\n'a')"}) {
    expectNone(listFunction(body));
  }
}

TEST_F(PageFindingsTest, aPromotedIdentifierThatBreaksTheAnswer) {
  expectWarning(listFunction("return \"com.o'brien.app\";"), "com.o'brien",
                "the promoted identifier \"com.o'brien.app\" holds a quote");
  expectWarning(listFunction("return 'com.o\\'brien';"), "com.o\\'brien", "holds a quote");
  expectWarning(listFunction("return ['a', \"b'c\"].join(',');"), "b'c", "holds a quote");
  expectWarning(listFunction("var ids = ['a\\\\b']; return ids.join(',');"), "a\\\\b",
                "a backslash or a line break");
  expectWarning(listFunction("return [ // the first\n'a', \"b\\n\" ].join();"), "b\\n",
                "a line break");
  for (const auto* body :
       {"log(\"it's\"); return 'com.a,com.b';",
        "return document.querySelector(\"[data-x='1']\").textContent",
        "const all = [{id: 'a', name: \"Bob's\"}]; return all.map(i => i.id).join(',');",
        "const all = [{id: 'a', name: \"Bob's\"}]; return all.join(',');",
        "return ['a', b(\"it's\")].join(',');", "return [\"it's\"][0];",
        "return [\"it's\"].join(',').replace(/'/g, '');",
        "var ids = ['com.a']; return ids.join(',').replace(/'/g, '');",
        "const l = \"it's\"; return l === \"it's\" ? 'a.b' : 'c.d';",
        "return `com.${x ? 'a' : 'b'}`;", "return \"it's\" in all ? 'a' : 'b';"}) {
    expectNone(listFunction(body));
  }
}

TEST_F(PageFindingsTest, regularExpressionsAreNoStrings) {
  for (const auto* body :
       {"var r = /[/'\"]/g, s = ok(/\\/'/);", "if (!/'/.test(x)) { /\"/.exec(x) }",
        "return /'/.source;", "var x = 4 / 2, y = 'b / c', z = x / y;"}) {
    expectWarning(listFunction(std::string(body) + " return [\"it's\"].join();"), "it's",
                  "holds a quote");
  }
  expectNone(script("var r = /['/]function cocoa_obtain_promo_app_ids() {}/;"));
}

TEST_F(PageFindingsTest, everyPageOfEveryAdvertisementIsLookedAt) {
  AdDocument document;
  document.pages = "<html_contents><en><![CDATA[" + link("?tools=1") +
                   "]]></en><default><![CDATA[" + link("?tools=2") + link("?tools=13") +
                   "]]></default></html_contents>";
  AdDocument other = document;
  other.adid = "<adid>12</adid>";
  document.table = tableLine(kEditor, "12");
  document.behind = other.advertisement();
  EXPECT_THAT(warnings(document.text()),
              ElementsAre(EndsWith("found in \"tools=1\": the link opens the App Store"),
                          EndsWith("found in \"tools=13\": the link opens the App Store"),
                          EndsWith("found in \"tools=1\": the link opens the App Store"),
                          EndsWith("found in \"tools=13\": the link opens the App Store")));
}

TEST_F(PageFindingsTest, brokenPagesDoNoHarm) {
  for (const std::string page : {"<",
                                 "<a",
                                 "<a ",
                                 "<a href",
                                 "<a href=",
                                 "<a href=\"",
                                 "<a href='x",
                                 "</",
                                 "</a",
                                 "<!--",
                                 "<script>",
                                 "<script>'",
                                 "<script>function cocoa_obtain_promo_app_ids",
                                 "<script>cocoa_obtain_promo_app_ids =",
                                 "<script>cocoa_obtain_promo_app_ids = (",
                                 "<script>function cocoa_obtain_promo_app_ids() { return",
                                 "<a = = >",
                                 "<a id=cocoa_close_web",
                                 "<script>function cocoa_obtain_promo_app_ids() { return [",
                                 "<script>\\",
                                 "<script>'\\",
                                 "<script>cocoa_obtain_promo_app_ids = () =>",
                                 "<script>cocoa_obtain_promo_app_ids = )("}) {
    const auto result = report(documentOf(page + " "));
    EXPECT_EQ(result.status, 0) << page;
    EXPECT_EQ(report(documentOf(page)).status, 0) << page;
  }
}

}  // namespace
}  // namespace qorix::test
