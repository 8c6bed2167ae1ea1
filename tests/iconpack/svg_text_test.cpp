#include "svg_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <string>

#include "path_text.h"

using namespace iconpack;

TEST(PathTextTest, ArcFlagsStandApart) {
    EXPECT_EQ(NormalizePath("M4 9a4 4 0 004.234 4.368.713.713 0 01.758.758"),
              "M4 9a4 4 0 0 0 4.23 4.37 .71 .71 0 0 1 .76 .76");
    EXPECT_EQ(NormalizePath("M1 2A3 3 0 113 4"), "M1 2A3 3 0 1 1 3 4");
}

TEST(PathTextTest, RoundingErrorsDoNotAddUp) {
    std::string steps = "M0 0";
    for (int i = 0; i < 100; i++)
        steps += "l.004.106";
    std::string path = NormalizePath(steps + "L9 9");
    // Followed with two decimals, the end of the steps is that of the exact path: (0.4, 10.6).
    int x = 0;
    int y = 0;
    std::string relative = path.substr(5, path.find('L') - 5);
    for (size_t at = 0; at < relative.size();) {
        size_t used = 0;
        x += static_cast<int>(std::lround(std::stod(relative.substr(at), &used) * 100));
        at += used;
        y += static_cast<int>(std::lround(std::stod(relative.substr(at), &used) * 100));
        at += used;
    }
    EXPECT_EQ(x, 40);
    EXPECT_EQ(y, 1060);
}

TEST(PathTextTest, RepeatedLettersAreLeftOutButNotMoves) {
    EXPECT_EQ(NormalizePath("M1,2 L3,4 L5,6 h-1 h-2 M 7 8 9 10 z m1 1 z"),
              "M1 2 3 4 5 6h-1-2M7 8 9 10zm1 1z");
    EXPECT_EQ(NormalizePath("m+1 2 3e0 -4c.5.5.25-.75 1 0zl1 1"), "m1 2 3-4c.5 .5 .25-.75 1 0zl1 1");
    EXPECT_EQ(NormalizePath("M-0.001 0.5v-.5"), "M0 .5v-.5");
}

TEST(PathTextTest, MalformedDataIsRefused) {
    for (const char* data : {"1 2", "M1", "M1 2l", "M1 2x", "M0 0a1 1 0 2 0 1 1", "M0 0z 1", "M0 0L1 e"})
        EXPECT_THROW(NormalizePath(data), std::runtime_error) << data;
}

TEST(SvgTextTest, OnlyThePictureIsLeft) {
    EXPECT_EQ(
        NormalizeSvg(
            "<?xml version='1.0'?><!-- <svg> -->\n<svg fill=\"none\" class=\"a b\" stroke='currentColor'\n"
            "stroke-width=\"2\" xmlns=\"ns\" ><title>Words</title><path d=\"M1 2h.01\"/>"
            "<rect width=\"2\" data-x=\"1\" stroke-width=\"2\"></rect></svg>\n"),
        "<svg\n  xmlns=\"ns\"\n  stroke=\"#000\"\n  stroke-width=\"1.5\"\n  fill=\"none\"\n>\n"
        "  <title>\n  </title>\n  <path d=\"M1 2h.01\" stroke-width=\"2\" />\n"
        "  <rect width=\"2\" stroke-width=\"1.5\">\n  </rect>\n</svg>\n");
}

TEST(SvgTextTest, WhatIsNoPictureIsRefused) {
    for (const char* text :
         {"", "svg", "<svg", "<svg>", "<html></html>", "<svg a></svg>", "<svg a=b></svg>",
          "<svg a=\"b></svg>", "<!-- <svg></svg>", "<svg></g>", "<svg><path d='x'/></svg>"})
        EXPECT_THROW(NormalizeSvg(text), std::runtime_error) << text;
}
