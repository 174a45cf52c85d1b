#include <gtest/gtest.h>

#include <qorix/platform/Url.h>

namespace qorix {
namespace {

TEST(UrlTest, readsAddressesAsTheyAreSpelled) {
  for (const char* text :
       {"https://ads.example.com/mac/ads/commonad.xml", "HTTP://Example.com:8080/a%20b?x=1#y",
        "http://[::1]:80/", "http://user@127.0.0.1/", "macappstore://apps.example.com/id1?ls=1",
        "mailto:a@example.com", "file:///usr/lib/libqorix.so", "commonad.xml", "//example.com/x",
        "/mac/ads", "?x", "https://", "http:///path", "http:path"}) {
    const auto url = Url::parse(text);
    ASSERT_TRUE(url) << text;
    EXPECT_EQ(url->absoluteString(), text);
  }
}

TEST(UrlTest, refusesWhatIsMalformed) {
  for (const char* text :
       {"", " ", "https://example.com/a b", "https://example.com/[x]", "https://example.com/a|b",
        "https://example.com/%zz", "https://example.com/\n", "https://ex\xC3\xA4mple.com/",
        "http://example.com:port/", "1http://example.com/"}) {
    EXPECT_FALSE(Url::parse(text)) << text;
  }
  EXPECT_FALSE(Url::parse(std::string_view("http://a/\0b", 11)));
  EXPECT_FALSE(Url::parse(std::string_view()));
}

TEST(UrlTest, namesItsHost) {
  EXPECT_EQ(Url::parse("https://u@ads.example.com:80/a/b")->host(), "ads.example.com");
  EXPECT_EQ(Url::parse("http://127.0.0.1/")->host(), "127.0.0.1");
  EXPECT_EQ(Url::parse("http://[::1]:80/")->host(), "::1");
  EXPECT_EQ(Url::parse("//example.com/x")->host(), "example.com");
  for (const char* text :
       {"commonad.xml", "https://", "http:///path", "http:path", "http://:80/"}) {
    EXPECT_EQ(Url::parse(text)->host(), "") << text;
  }
  EXPECT_EQ(Url::fromWebEngine("https://example.com/a|b").host(), "");
}

TEST(UrlTest, namesItsParts) {
  const auto url = Url::fromWebEngine("https://example.com/a?x=1|2?#f?z");
  EXPECT_EQ(url.scheme(), "https");
  EXPECT_EQ(url.query(), "x=1|2?");
  EXPECT_EQ(Url::fromWebEngine("https://example.com/#?x").query(), std::nullopt);
  EXPECT_EQ(Url::fromWebEngine("https://example.com/?").query(), "");
  EXPECT_EQ(Url::fromWebEngine("nothing").scheme(), "");
}

TEST(UrlTest, anAddressWithoutAPathHasNoQuery) {
  for (const char* text : {"mailto:someone@example.com?subject=a", "about:blank?a",
                           "data:text/html,?a", "tel:?a", "x-y.z+1:?a"}) {
    EXPECT_EQ(Url::fromWebEngine(text).query(), std::nullopt) << text;
  }
  for (const char* text :
       {"file:///x?a", "file:/x?a", "buy?a", "?a", "/b?a", "macappstore://x?a"}) {
    EXPECT_EQ(Url::fromWebEngine(text).query(), "a") << text;
  }
}

TEST(UrlTest, filePathsSurviveTheWayThereAndBack) {
  const std::string path = "/opt/Ex\xC3\xA4mple App/100%/lib?#.so";
  const Url url = Url::fileUrl(path);
  EXPECT_EQ(url.absoluteString(), "file:///opt/Ex%C3%A4mple%20App/100%25/lib%3F%23.so");
  EXPECT_TRUE(Url::parse(url.absoluteString()));
  EXPECT_EQ(url.filePath(), path);
  EXPECT_EQ(Url::fromWebEngine("https://example.com/x").filePath(), std::nullopt);
}

}  // namespace
}  // namespace qorix
