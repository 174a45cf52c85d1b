#include <string>
#include <utility>
#include <vector>

#include "tools/adcheck/AdcheckTest.h"

namespace qorix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FindingsTest : public AdcheckTest {
 protected:
  /// That one thing is found: at the first place of `part`, in these words.
  void expectWarning(const AdDocument& document, const std::string& part,
                     const std::string& words) {
    const std::string text = document.text();
    EXPECT_THAT(warnings(text), ElementsAre(placeOf(part, text) + ": " + words));
  }
  void expectNone(const AdDocument& document) {
    EXPECT_THAT(warnings(document.text()), IsEmpty()) << document.text();
  }

  /// A document in which one part is replaced.
  static AdDocument with(std::string AdDocument::*part, std::string text) {
    AdDocument document;
    document.*part = std::move(text);
    return document;
  }
  static AdDocument customised(const std::string& members) {
    return with(&AdDocument::advance,
                "<advance>{\"com.example.editor\": {" + members + "}}</advance>");
  }
  static AdDocument titled(const std::string& languages) {
    return with(&AdDocument::title, "<title>" + languages + "</title>");
  }
};

TEST_F(FindingsTest, aSoundDocumentHasNone) {
  AdDocument document;
  document.table = tableLine(kEditor, "11") + tableLine("com.example.viewer", "11");
  document.others =
      "<promo_app_name>Example Viewer</promo_app_name>"
      "<promo_app_name>Tool.Pro</promo_app_name>";
  expectNone(document);
  EXPECT_THAT(report(document.text()).output, testing::EndsWith("\n\nno warnings\n"));
}

TEST_F(FindingsTest, warningsAreCountedAndSortedByTheirPlaces) {
  AdDocument document;
  document.count = "<count>0</count>";
  document.version = "<version>1a2a3</version>";
  const auto result = report(document.text());
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, testing::EndsWith("\n2 warnings\n"));
  EXPECT_LT(result.output.find("version is \"1a2a3\""), result.output.find("count is 0"));
}

// The host table.

TEST_F(FindingsTest, aBrokenTableLineServesOnlyHostsBeforeIt) {
  auto document =
      with(&AdDocument::table, tableLine("com.example.a", "11") + "\n" + tableLine(kEditor, "11") +
                                   "\n<push_ad_config><appid>x</appid></push_ad_config>");
  expectWarning(document, "<push_ad_config><appid>x",
                "this table line has no adid: only hosts with a line before it can read the "
                "document: com.example.a, com.example.editor");
  document.table = tableLine(kEditor, "11") + "\n<push_ad_config><adid>1</adid></push_ad_config>";
  expectWarning(document, "<push_ad_config><adid>1",
                "this table line has no appid: only hosts with a line before it can read the "
                "document: com.example.editor");
}

TEST_F(FindingsTest, whatABrokenLineWouldSayIsNotGuessed) {
  auto document = with(&AdDocument::table, "<push_ad_config><adid>12</adid></push_ad_config>");
  auto other = customised("");
  other.adid = "<adid>12</adid>";
  document.behind = other.advertisement();
  EXPECT_THAT(warnings(document.text()), IsEmpty());  // but for what the host refuses it for
  EXPECT_THAT(report(document.text()).output, HasSubstr("refused: appid is missing"));
}

TEST_F(FindingsTest, aSecondLineForOneHostNeverCounts) {
  expectWarning(
      with(&AdDocument::table, tableLine(kEditor, "11") + "\n" + tableLine(kEditor, "99")),
      tableLine(kEditor, "99"),
      "an earlier table line names \"com.example.editor\": this one never counts");
}

TEST_F(FindingsTest, aLineMayNameNoAdvertisement) {
  const auto document = with(&AdDocument::table, tableLine("com.example.a", "12"));
  expectWarning(document, "<adid>12",
                "no push_ad has the adid \"12\": \"com.example.a\" refuses the document");
}

TEST_F(FindingsTest, aHostsIdentifierMustBePlain) {
  for (const std::string identifier : {"com.example.o'brien", "com.example\\x"}) {
    const std::string words =
        "the identifier \"" + identifier +
        "\" holds a quote or a backslash, which breaks the script that reports "
        "it to the page";
    expectWarning(with(&AdDocument::table, tableLine(identifier, "11")), "<appid>", words);
  }
  expectWarning(with(&AdDocument::advance, "<advance>{\"com.o'brien\": {}}</advance>"),
                "\"com.o'brien\"",
                "the identifier \"com.o'brien\" holds a quote or a backslash, which breaks the "
                "script that reports it to the page");
  expectNone(with(&AdDocument::table, tableLine("com.example-x_y.Z9", "11")));
}

TEST_F(FindingsTest, blanksInTheTableCount) {
  expectWarning(with(&AdDocument::table, tableLine(" com.example.a\n", "11")), "<appid>",
                "blanks around the appid count: no host is called so");
}

TEST_F(FindingsTest, onlyTheFirstBrokenTableLineIsToldOf) {
  auto document =
      with(&AdDocument::table, tableLine(kEditor, "11") + "\n" + tableLine("com.example.b", "99") +
                                   "\n<push_ad_config><appid>x</appid></push_ad_config>\n" +
                                   tableLine("com.example.c", "11") + "\n<push_ad_config/>");
  const std::string text = document.text();
  EXPECT_THAT(warnings(text), ElementsAre(HasSubstr("\"com.example.b\" refuses the document"),
                                          placeOf("<push_ad_config><appid>x", text) +
                                              ": this table line has no adid: only hosts with a "
                                              "line before it can read the document: "
                                              "com.example.editor"));
}

TEST_F(FindingsTest, advertisementsThatSpoilOrHideOthers) {
  const std::string table = tableLine("com.example.a", "12");
  auto document = with(&AdDocument::table, table);
  document.behind = with(&AdDocument::adid, "").advertisement() +
                    with(&AdDocument::adid, "<adid>12</adid>").advertisement();
  const std::string text = document.text();
  EXPECT_THAT(warnings(text),
              ElementsAre(placeOf("<push_ad>\n\n", text) +
                          ": this push_ad has no adid: hosts that get an advertisement after it "
                          "refuse the document"));
  document = AdDocument();
  document.behind = with(&AdDocument::adid, "<adid >11</adid>").advertisement();
  expectWarning(document, "<adid >11",
                "an earlier push_ad has the same adid: no host gets this one");
  document.behind = with(&AdDocument::adid, "<adid>12</adid>").advertisement();
  document.table = table;
  expectNone(document);
}

TEST_F(FindingsTest, anAdvertisementThatNoHostGets) {
  AdDocument document;
  document.behind =
      "<push_ad >" + with(&AdDocument::adid, "<adid>12</adid>").advertisement().substr(9);
  expectWarning(document, "<push_ad >",
                "no table line names the adid \"12\", and this push_ad is not the first: no host "
                "gets it");
}

TEST_F(FindingsTest, anAdvertisementThatOtherHostsWouldRefuse) {
  auto document = with(&AdDocument::table, tableLine("com.example.a", "12"));
  auto other = with(&AdDocument::adid, "<adid>12</adid>");
  other.width = "";
  document.behind = "<push_ad >" + other.advertisement().substr(9);
  expectWarning(document, "<push_ad >",
                "width is missing from push_ad: hosts that get this push_ad refuse the document");
  other.width = "<width/>";
  document.behind = other.advertisement();
  expectWarning(document, "<width/>",
                "width is empty: hosts that get this push_ad refuse the document");
  other.width = document.width;
  other.title = "<title></title>";
  document.behind = other.advertisement();
  expectWarning(document, "<title></title>",
                "title has no child element with a text: hosts that get this push_ad refuse the "
                "document");
  // The host that refuses it is told so once.
  EXPECT_THAT(run({"--app", "com.example.a", write(document.text())}).output,
              testing::EndsWith("\n\nno warnings\n"));
}

TEST_F(FindingsTest, namesThatAreNearlyRead) {
  expectWarning(with(&AdDocument::others, "<Count>5</Count>"), "<Count>",
                "\"Count\" is never read: the element is called \"count\"");
  expectWarning(with(&AdDocument::others, "<titles/>"), "<titles/>",
                "\"titles\" is never read: the element is called \"title\"");
  expectWarning(with(&AdDocument::table, "<push_ad_configs/>"), "<push_ad_configs/>",
                "\"push_ad_configs\" is never read: the element is called \"push_ad_config\"");
  expectWarning(with(&AdDocument::behind, "<Push_Ad/>"), "<Push_Ad/>",
                "\"Push_Ad\" is never read: the element is called \"push_ad\"");
  expectNone(with(&AdDocument::others, "<colour>5</colour>"));
}

TEST_F(FindingsTest, markupInTextsIsDropped) {
  const auto expectDropped = [&](const AdDocument& document, const std::string& name) {
    expectWarning(
        document, "<b>",
        "markup inside " + name + " is dropped: escape it or put it into a CDATA section");
  };
  expectDropped(titled("<default>Try <b>it</b></default>"), "default");
  expectDropped(with(&AdDocument::pages,
                     "<html_contents><default><b>Hello</b><i/></default></html_contents>"),
                "default");
  expectDropped(with(&AdDocument::width, "<width>300<b>0</b></width>"), "width");
  expectDropped(with(&AdDocument::others, "<promo_app_name>A <b>B</b></promo_app_name>"),
                "promo_app_name");
  expectDropped(with(&AdDocument::table, tableLine("com.<b>example</b>", "11")), "appid");
  expectNone(titled("<default>Try<!-- <b> --><![CDATA[<b>]]>&lt;b></default>"));
}

// The record.

TEST_F(FindingsTest, oddNumbersOfTheRecord) {
  expectWarning(with(&AdDocument::count, "<count>0</count>"), "<count>",
                "count is 0: shown once where nothing was shown before, and never elsewhere");
  expectWarning(with(&AdDocument::embed, "<embed>9</embed>"), "<embed>",
                "embed is 9: there are eight anchors; the banner lies at the lower left, without "
                "offsets");
  expectWarning(with(&AdDocument::embed, "<embed>-1</embed>"), "<embed>",
                "embed is -1: nothing is shown, but the showing is counted");
  expectWarning(with(&AdDocument::width, "<width>0</width>"), "<width>",
                "width is 0: a banner has no area, a pop-up takes the size that its window has");
  expectWarning(with(&AdDocument::height, "<height>-5</height>"), "<height>",
                "height is -5: a banner has no area, a pop-up takes the size that its window has");
  expectWarning(with(&AdDocument::delay, "<delay>-1</delay>"), "<delay>",
                "delay is -1: the showing is counted, but never seen");
  expectWarning(with(&AdDocument::adid, "<adid>0</adid>"), "<adid>",
                "adid is 0: identifiers count from 1");
  for (const auto* embed : {"0", "1", "8"}) {
    expectNone(with(&AdDocument::embed, std::string("<embed>") + embed + "</embed>"));
  }
  expectNone(with(&AdDocument::count, "<count>1</count>"));
  expectNone(with(&AdDocument::delay, "<delay> +5\n</delay>"));
}

TEST_F(FindingsTest, textsThatAreNoNumbers) {
  expectWarning(with(&AdDocument::width, "<width>12px</width>"), "<width>",
                "width is \"12px\", which is read as 12");
  expectWarning(with(&AdDocument::delay, "<delay>3.9</delay>"), "<delay>",
                "delay is \"3.9\", which is read as 3");
  expectWarning(with(&AdDocument::count, "<count>99999999999999999999</count>"), "<count>",
                "count is \"99999999999999999999\", which is read as 9223372036854775807");
}

TEST_F(FindingsTest, aSwitchThatDoesNotSwitchOff) {
  for (const std::string text : {"false", "No", "OFF", "00", "-0", " 0", "0\n"}) {
    EXPECT_THAT(warnings(with(&AdDocument::enable, "<enable>" + text + "</enable>").text()),
                ElementsAre(HasSubstr("which switches on: only 0 switches off")))
        << text;
  }
  for (const std::string text : {"0", "1", "yes", "true", "on"}) {
    expectNone(with(&AdDocument::enable, "<enable>" + text + "</enable>"));
  }
}

TEST_F(FindingsTest, versionsOfWhichNotAllIsCompared) {
  expectWarning(with(&AdDocument::version, "<version>2.1a3a9</version>"), "<version>",
                "version is \"2.1a3a9\": what follows the second \"a\" is not compared, only what "
                "precedes the first and the number between them");
  expectWarning(with(&AdDocument::version, "<version>1.0final2</version>"), "<version>",
                "version is \"1.0final2\": after an \"a\" only a number is compared, and there is "
                "none: all such versions are one");
  expectWarning(with(&AdDocument::version, "<version>1.0a3.1</version>"), "<version>",
                "version is \"1.0a3.1\": what follows the number after the \"a\" is not "
                "compared");
  for (const std::string number : {"202611211200", "2147483648", "-2147483649"}) {
    expectWarning(with(&AdDocument::version, "<version>1a" + number + "</version>"), "<version>",
                  "version is \"1a" + number +
                      "\": the number after the \"a\" is larger than 32 bits hold, and all such "
                      "numbers are one");
  }
  for (const std::string text :
       {"2.1", "2.1a3", "2.1a03", "1.0beta2", "x", "2.1a-3", "2.1a+3\n", "1a2147483647", "beta"}) {
    expectNone(with(&AdDocument::version, "<version>" + text + "</version>"));
  }
}

TEST_F(FindingsTest, promotedNamesThatAreNeverFound) {
  expectWarning(with(&AdDocument::others, "<promo_app_name>Viewer.app</promo_app_name>"),
                "<promo_app_name>",
                "installed applications are known without .app: this one is never found");
  expectWarning(with(&AdDocument::others, "<promo_app_name> Viewer</promo_app_name>"),
                "<promo_app_name>",
                "blanks around a promoted name count: no application is called so");
  expectWarning(with(&AdDocument::others, "<promo_app_name/>"), "<promo_app_name",
                "an empty promo_app_name does not count");
}

TEST_F(FindingsTest, elementsThatAreNeverRead) {
  expectWarning(with(&AdDocument::others, "<count>5</count>"), "<count>5",
                "a second count is never read");
  expectWarning(with(&AdDocument::others, "<title/>"), "<title/>", "a second title is never read");
  expectWarning(with(&AdDocument::others, "<offsetx>5</offsetx>"), "<offsetx>",
                "offsetx is read from the customisation only");
  expectNone(with(&AdDocument::others, "<comment>5</comment><comment>6</comment>"));
}

// The customisation.

TEST_F(FindingsTest, aSoundCustomisationHasNone) {
  expectNone(
      customised("\"enable\": true, \"version\": \"3\", \"embed\": 2, \"width\": 320, "
                 "\"height\": 50.0, \"offsetx\": -1, \"offsety\": 0, \"count\": 1e1, "
                 "\"delay\": 3, \"notes\": \"n\""));
  expectNone(with(&AdDocument::advance, "<advance> {\n} </advance>"));
}

TEST_F(FindingsTest, aCustomisationThatIsNone) {
  expectWarning(with(&AdDocument::advance, "<advance>none</advance>"), "one<",
                "advance is not JSON (invalid literal): no host is customised");
  expectWarning(with(&AdDocument::advance, "<advance>[]</advance>"), "[]",
                "advance is no JSON object: no host is customised");
  expectWarning(with(&AdDocument::advance, "<advance>7</advance>"), "7<",
                "advance is not JSON (neither an object nor an array): no host is customised");
  EXPECT_THAT(
      warnings(
          with(&AdDocument::advance, "<advance>{\"a\": {\"width\": 1e999,}}</advance>").text()),
      ElementsAre(HasSubstr("advance is not JSON (unexpected '}'; expected string literal)")));
}

TEST_F(FindingsTest, aCustomisationForAHostThatGetsAnotherAdvertisement) {
  auto document = customised("");
  document.table = tableLine(kEditor, "12");
  document.behind = with(&AdDocument::adid, "<adid>12</adid>").advertisement();
  expectWarning(document, "\"com.example.editor\"",
                "the table gives \"com.example.editor\" the adid \"12\": this customisation never "
                "counts");
  auto other = with(&AdDocument::adid, "<adid>12</adid>");
  other.advance = "<advance>{\"com.example.viewer\": {}}</advance>";
  document.advance = "<advance>{\"com.example.viewer\" : {}}</advance>";
  document.behind = other.advertisement();
  expectWarning(document, "\"com.example.viewer\":",
                "no table line names \"com.example.viewer\", which gets the first push_ad: this "
                "customisation never counts");
}

TEST_F(FindingsTest, identifiersThatDifferInLetterCase) {
  auto document = with(&AdDocument::advance, "<advance>{\"com.example.Editor\": {}}</advance>");
  document.table = tableLine(kEditor, "11");
  expectWarning(document, "\"com.example.Editor\"",
                "the table names \"com.example.editor\", not \"com.example.Editor\": letter case "
                "counts");
  document.table += tableLine("com.example.Editor", "11");
  expectNone(document);
}

TEST_F(FindingsTest, aHostsEntryThatIsNoObject) {
  expectWarning(with(&AdDocument::advance, "<advance>{\"embed\": 3}</advance>"), "3}",
                "what stands under \"embed\" is no object: it customises nothing");
}

TEST_F(FindingsTest, membersThatAreIgnored) {
  expectWarning(customised("\"offsetX\": 3"), "\"offsetX\"",
                "no member called \"offsetX\" is known: it is ignored");
  expectWarning(customised("\"width\": \"320\""), "\"320\"",
                "width must be a number, without quotes: it is ignored");
  expectWarning(customised("\"embed\": null"), "null", "embed must be a number: it is ignored");
  expectWarning(customised("\"version\": 3"), "3}", "version must be a string: it is ignored");
  expectWarning(customised("\"notes\": \"\""), "\"\"}",
                "notes must be a string that is not empty: it is ignored");
  expectWarning(customised("\"count\": 1, \"count\": 2"), "\"count\": 1",
                "a later member has the same name \"count\": this one does not count");
}

TEST_F(FindingsTest, oddValuesOfMembers) {
  expectWarning(customised("\"count\": 0"), "0}",
                "count is 0: shown once where nothing was shown before, and never elsewhere");
  expectWarning(customised("\"embed\": 12"), "12}",
                "embed is 12: there are eight anchors; the banner lies at the lower left, without "
                "offsets");
  expectWarning(customised("\"width\": 0"), "0}",
                "width is 0: a banner has no area, a pop-up takes the size that its window has");
  expectWarning(customised("\"delay\": -2"), "-2}",
                "delay is -2: the showing is counted, but never seen");
  expectWarning(customised("\"height\": 50.5"), "50.5",
                "height loses its fraction: it is read as 50");
  expectWarning(customised("\"version\": \"1a2a3\""), "\"1a2a3\"",
                "version is \"1a2a3\": what follows the second \"a\" is not compared, only what "
                "precedes the first and the number between them");
}

TEST_F(FindingsTest, namesAndValuesAreFoundWhateverStandsAround) {
  const std::string advance =
      "<advance> { \"a\" : [1, {\"b\": \"]}\\\"\"}, -1.5e3, true] , \"\\u0063om.x\" :{ "
      "\"offset\\u0079\":"
      " \"1\"\n,\"embed\":99} } </advance>";
  const auto document = with(&AdDocument::advance, advance);
  const std::string text = document.text();
  EXPECT_THAT(
      warnings(text),
      ElementsAre(
          placeOf("[1, {", text) + ": what stands under \"a\" is no object: it customises nothing",
          placeOf("\"1\"\n", text) + ": offsety must be a number, without quotes: it is ignored",
          placeOf("99}", text) + ": embed is 99: there are eight anchors; the "
                                 "banner lies at the lower left, without offsets"));
}

// The languages.

TEST_F(FindingsTest, aDictionaryWithoutDefault) {
  expectWarning(titled("<en>E</en>"), "<title>",
                "title has no \"default\": users of other languages get nothing");
  expectWarning(with(&AdDocument::pages, "<html_contents><en>E</en></html_contents>"),
                "<html_contents>",
                "html_contents has no \"default\": users of other languages get nothing");
}

TEST_F(FindingsTest, twoCodesForOneLanguage) {
  expectWarning(
      titled("<zh>Z</zh><zh-Hans>H</zh-Hans><default>D</default>"), "<zh-Hans>",
      "\"zh\" and \"zh-Hans\" serve the same users, and the first in the document counts: "
      "\"zh-Hans\" is never used");
  expectWarning(
      titled("<z>1</z><zh>2</zh><default>D</default>"), "<zh>",
      "\"z\" and \"zh\" serve the same users, and the first in the document counts: \"zh\" is "
      "never used");
  EXPECT_THAT(warnings(titled("<z>1</z><zh>2</zh><zh-Hans>3</zh-Hans><default>D</default>").text()),
              ElementsAre(HasSubstr("\"zh\" is never used"),
                          HasSubstr("\"z\" and \"zh-Hans\" serve the same users")));
  expectNone(titled("<zh-Hans>H</zh-Hans><zh>Z</zh><default>D</default>"));
  expectNone(titled("<zh-Hans>H</zh-Hans><zh-Hant>T</zh-Hant><de>E</de><default>D</default>"));
}

TEST_F(FindingsTest, codesThatNoUserPrefers) {
  const auto expectSpelled = [&](const std::string& code, const std::string& spelled) {
    expectWarning(titled("<" + code + ">X</" + code + "><default>D</default>"), "<" + code + ">",
                  "no user prefers \"" + code + "\": it is spelled \"" + spelled + "\"");
  };
  expectSpelled("EN", "en");
  expectSpelled("pt_BR", "pt-BR");
  expectSpelled("zh-hans", "zh-Hans");
  expectSpelled("zh-Hant-tw", "zh-Hant-TW");
  expectNone(
      titled("<es-419>E</es-419><pt-BR>X</pt-BR><zh-Hant-TW>Z</zh-Hant-TW><fil>F</fil>"
             "<default>D</default>"));
}

TEST_F(FindingsTest, entriesThatDoNotCount) {
  expectWarning(titled("<en/><default>D</default>"), "<en/>", "\"en\" has no text and is left out");
  expectWarning(titled("<en>1</en><en>2</en><default>D</default>"), "<en>2",
                "\"en\" stands here again, and the last one counts");
  expectWarning(titled("<en> \n</en><default>D</default>"), "<en>",
                "\"en\" holds only blanks: its users see them, not another language");
}

}  // namespace
}  // namespace qorix::test
