// SPDX-License-Identifier: Apache-2.0
#include "view_page.h"

#include <gtest/gtest.h>

using namespace zan::tool;

namespace {

TEST(ViewPage, TitlesAreText) {
    EXPECT_EQ(html_text("a<b>&\"c"), "a&#60;b&#62;&#38;&#34;c");
    EXPECT_EQ(html_text("plain.json"), "plain.json");
    EXPECT_EQ(html_text("\xff"), "\xef\xbf\xbd");
}

TEST(ViewPage, DigestsAreBase64OfTheirBytes) {
    // 00 10 83 is the bits 000000 000001 000010 000011.
    EXPECT_EQ(base64_of_hex("001083"), "ABCD");
    EXPECT_EQ(base64_of_hex("ff"), "/w==");
}

} // namespace
