#include "Report/HtmlText.h"

#include <gtest/gtest.h>

#include <string>

namespace controller {
namespace {

TEST(HtmlTextTest, WhatMeansSomethingInHtmlBecomesAReference) {
  EXPECT_EQ(escaped("<script>alert(\"a\" & 'b')</script>"),
            "&lt;script&gt;alert(&quot;a&quot; &amp; &#39;b&#39;)&lt;/script&gt;");
}

TEST(HtmlTextTest, OtherTextStaysAsItIs) {
  const std::string text = "a-z_0.9\ttab\nline \u00e9 \u2030 \U0001F682";  // of one to four bytes each
  EXPECT_EQ(escaped(text), text);
}

TEST(HtmlTextTest, ControlCharactersAreReplaced) {
  EXPECT_EQ(escaped(std::string("a\0b\x1b\x7f\r", 6)),
            "a\uFFFD"
            "b\uFFFD\uFFFD\uFFFD");
}

TEST(HtmlTextTest, WhatIsNoUtf8IsReplacedByteForByte) {
  EXPECT_EQ(escaped("\x80"), "\uFFFD");            // a continuation alone
  EXPECT_EQ(escaped("\xC3<"), "\uFFFD&lt;");       // cut short: what follows is not swallowed
  EXPECT_EQ(escaped("\xE2\x82"), "\uFFFD\uFFFD");  // at the end
  EXPECT_EQ(escaped("\xC0\xBC"), "\uFFFD\uFFFD");  // a longer form of '<'
  EXPECT_EQ(escaped("\xE0\x80\xBC"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(escaped("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");            // half a surrogate pair
  EXPECT_EQ(escaped("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");  // behind the last character
  EXPECT_EQ(escaped("\xFF"), "\uFFFD");
}

}  // namespace
}  // namespace controller
