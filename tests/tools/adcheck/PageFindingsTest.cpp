#include <string>
#include <vector>

#include "support/Repeated.h"
#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

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

TEST_F(PageFindingsTest, elementsAreNestedAsABrowserNestsThem) {
  const std::string noLink = "lies in no link (a with href): clicks on it do nothing";
  // A link ends where the next one begins, a paragraph where a block does, and a cell with its
  // table.
  expectWarning("<a href=\"/\">x<a name=\"y\"><b class=\"zamopenout\">z</b></a>", "zamopenout",
                noLink);
  expectWarning("<p><a href=\"/\">x</a><div class=\"zamopenout\">y</div>", "zamopenout", noLink);
  // A link that is open where a paragraph begins goes on inside of it.
  expectNone("<a href=\"/\">x<p><b class=\"zamopenout\">y</b></p></a>");
  expectNone("<a href=\"/\">x<p>y</a> z<b><p></b><img></p>");
  // What is found in both parts of such a link is told once.
  expectWarning("<a href=\"/?tools=12\">x<p>y</a>z</p>", "/?tools", "is also found in");
  expectWarning("<a class=\"zamopenout\" href=\"/\"><p><img></a></p>", "zamopenout",
                "a click on an element inside this one");
}

TEST_F(PageFindingsTest, onlyTheFirstAttributeOfANameCounts) {
  expectNone("<a href=\"/\" href=\"/?tools=12\">x</a>");
  expectWarning("<a href=\"/?tools=12\" HREF=\"/\">x</a>", "/?tools", "is also found in");
}

TEST_F(PageFindingsTest, whatIsHiddenWhereScriptsRunIsNoPartOfThePage) {
  expectNone("<noscript><a class=\"ZAMOPENOUT\" href=\"?tools=12\">x</a></NOSCRIPT>");
  expectNone("<head><noscript><img class=ZAMOPENOUT></noscript></head><body>x");
  expectNone("<noscript><a class=\"ZAMOPENOUT\" href=\"?tools=12\">");
  expectWarning("<noscript><b></b></noscript><img class=ZAMOPENOUT>", "ZAMOPENOUT", "letter case");
}

TEST_F(PageFindingsTest, scriptsAreLeftToThePreview) {
  const auto scriptLine = HasSubstr("\n  scripts        not run here: qorix-preview ");
  const std::string half = script("function cocoa_obtain_promo_app_ids() { return ['it\\'s']; }");
  expectNone(half);
  EXPECT_THAT(report(documentOf(half)).output, scriptLine);
  EXPECT_THAT(report(documentOf("<p><SCRIPT src='x.js'></SCRIPT>")).output, scriptLine);
  EXPECT_THAT(report(documentOf("<p><!-- <script></script> --><template><script></script>")).output,
              testing::Not(scriptLine));
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
                                 "<a = = >",
                                 "<a id=cocoa_close_web",
                                 "<script>\\",
                                 "<script>'\\",
                                 "<noscript>",
                                 "<template><template>",
                                 "</a></p></br>",
                                 "<table><a href='?tools=2'><tr>",
                                 "<frameset>",
                                 "<svg><foreignObject><a href=x></svg>"}) {
    const auto result = report(documentOf(page + " "));
    EXPECT_EQ(result.status, 0) << page;
    EXPECT_EQ(report(documentOf(page)).status, 0) << page;
  }
}

TEST_F(PageFindingsTest, aPageOfTooManyTagsIsNotChecked) {
  const std::string odd = link("?ls = 1") + link("?tools=12");
  EXPECT_THAT(warnings(documentOf(repeated("<p>x</p>", 4000) + odd)),
              ElementsAre(HasSubstr("tools=12")));
  std::string attributes = "<a";
  for (int i = 0; i < 40'000; ++i) {
    attributes += " a";
    attributes += std::to_string(i);
  }
  for (const std::string& page :
       {repeated("<div>", 40'000), repeated("<p></p>", 40'000), attributes + ">"}) {
    EXPECT_THAT(warnings(documentOf(page + odd)),
                ElementsAre(HasSubstr("too many tags and attributes to be checked")));
  }
}

}  // namespace
}  // namespace qorix::test
