#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <pugixml.hpp>

#include "keltrun2/drawing/png_writer.h"
#include "keltrun2/os/clock.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using Drawing = std::function<void(DrawingSurface&)>;
using Box = std::array<int, 4>;  // left, top, right, bottom; the last two are just outside

// How dark a picture is: the sum of its pixels, where black is 1, and the box of the dark ones.
struct Ink {
  double Sum = 0;
  Box Extent{1 << 20, 1 << 20, 0, 0};
};

Ink Look(CairoPicture& picture) {
  const std::string bytes = picture.Encode();
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_TRUE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()));
  image.format = PNG_FORMAT_GRAY;
  std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(image));
  EXPECT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
  Ink ink;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    if (pixels[i] == 255) continue;
    ink.Sum += (255 - pixels[i]) / 255.0;
    const int x = static_cast<int>(i % image.width);
    const int y = static_cast<int>(i / image.width);
    const auto [left, top, right, bottom] = ink.Extent;
    ink.Extent = {std::min(left, x), std::min(top, y), std::max(right, x + 1), y + 1};
  }
  return ink;
}

TextStyle Style(float size, const char* face = "IPAGothic") {
  TextStyle style;
  style.Font.SetFace(face);
  style.Size = size;
  return style;
}

TEST(Picture, DrawsShapesWhereTheyBelong) {
  const auto line = [](float x1, float y1, float x2, float y2, float width) {
    return [=](DrawingSurface& to) { to.DrawLine(x1, y1, x2, y2, 0, width); };
  };
  const auto box = [](float x, float y, float w, float h, bool fill) {
    return [=](DrawingSurface& to) { to.DrawBox(x, y, w, h, 0, 1, fill); };
  };
  const auto circle = [](float radius, float width, bool fill) {
    return [=](DrawingSurface& to) { to.DrawCircle(100, 50, radius, 0, width, fill); };
  };
  const Drawing clipped = [&](DrawingSurface& to) {
    to.SetClip(20, 10, 30, 20);
    box(0, 0, 200, 100, true)(to);
    to.ResetClip();
    box(100, 50, 10, 10, true)(to);
  };
  // Both ends belong to an upright or level line, and it fills whole pixels. The slanted one is 50
  // long and 2 wide with round ends.
  for (const auto& [name, draw, sum, tolerance, extent] :
       Rows<const char*, Drawing, double, double, Box>{
           {"level", line(10, 20, 60, 20, 1), 51, 0, {10, 20, 61, 21}},
           {"off the grid", line(30.3F, 50, 30.3F, 10, 1), 41, 0, {30, 10, 31, 51}},
           {"3 wide", line(10, 20, 60, 20, 3), 53 * 3, 0, {9, 19, 62, 22}},
           {"thinnest", line(10, 20, 60, 20, 0), 51, 0, {10, 20, 61, 21}},
           {"slanted", line(20, 10, 50, 50, 2), 100 + 3.14, 3, {19, 9, 51, 51}},
           {"filled", box(40, 30, 20, 10, true), 200, 0, {40, 30, 60, 40}},
           {"negative size", box(60, 40, -20, -10, true), 200, 0, {40, 30, 60, 40}},
           {"outline", box(40, 30, 20, 10, false), 42 + 18, 0, {40, 30, 61, 41}},
           {"disc", circle(30, 1, true), 2827, 15, {70, 20, 130, 80}},
           {"ring", circle(30, 2, false), 377, 5, {69, 19, 131, 81}},
           {"clipped", clipped, 600 + 100, 0, {20, 10, 110, 60}}}) {
    CairoPicture picture(200, 100);
    draw(picture);
    const Ink ink = Look(picture);
    EXPECT_NEAR(ink.Sum, sum, tolerance + 0.01) << name;
    EXPECT_EQ(ink.Extent, extent) << name;
  }
}

TEST(Picture, DrawsTextsInTheirBox) {
  if (!HasJapaneseFont()) GTEST_SKIP() << "TEXTS WERE NOT TESTED: no Japanese font";
  CairoPicture picture(200, 100);
  const std::string text = "山田国郎";
  const auto draw = [&](const std::function<void(TextStyle&)>& change) {
    TextStyle style = Style(20);
    change(style);
    picture.Clear();
    picture.DrawText(text, 60, 10, style);
    return Look(picture);
  };
  const auto expect_fills = [](const Ink& ink, double x, double y, double width, double height) {
    const auto [x1, y1, x2, y2] = ink.Extent;
    EXPECT_TRUE(x1 >= x - 1 && x2 <= x + width + 1 && x2 - x1 > 0.8 * width) << x1 << ' ' << x2;
    EXPECT_TRUE(y1 >= y - 1 && y2 <= y + height + 1 && y2 - y1 > 0.6 * height) << y1 << ' ' << y2;
  };
  const auto width = [&](std::string_view of) { return picture.TextWidth(of, Style(20)); };
  EXPECT_FLOAT_EQ(width(text), 80);                           // one em per character
  EXPECT_FLOAT_EQ(width(text + "\xF3\xA0\x84\x80\r\n"), 80);  // these show nothing
  EXPECT_FLOAT_EQ(width("a\tb"), width("a b"));
  EXPECT_FLOAT_EQ(picture.TextWidth("山", Style(20, "No such face")), 20);
  const float height = picture.TextHeight(Style(20));
  EXPECT_NEAR(height, 20, 8);

  const Ink plain = draw([](TextStyle&) {});
  expect_fills(plain, 60, 10, 80, height);
  expect_fills(draw([](TextStyle& style) { style.HeightRatio = 2; }), 60, 10, 80, 2 * height);
  // Clockwise: the text goes down and its line extends to the left.
  expect_fills(draw([](TextStyle& style) { style.Turned = true; }), 60 - height, 10, height, 80);
  EXPECT_GT(draw([](TextStyle& style) { style.Font.Bold = true; }).Sum, plain.Sum * 1.15);
  EXPECT_GT(draw([](TextStyle& style) { style.Font.Italic = true; }).Extent[2], plain.Extent[2]);
  EXPECT_NEAR(draw([](TextStyle& style) { style.Font.Underline = true; }).Sum, plain.Sum + 80, 2);
}

// Black letters on a black ground show only by their white rim.
TEST(Picture, DrawsARimAroundLetters) {
  const auto draw = [](float halo, PictureFormatConst format) {
    CairoPicture picture(200, 60, format);
    picture.DrawBox(0, 0, 200, 60, 0, 1, true);
    TextStyle style = Style(20);
    style.Halo = halo;
    picture.DrawText("Halo", 10, 10, style);
    return format == KR_PICTURE_PNG ? std::to_string(std::lround(Look(picture).Sum))
                                    : picture.Encode();
  };
  EXPECT_EQ(draw(0, KR_PICTURE_PNG), "12000");
  EXPECT_EQ(draw(NAN, KR_PICTURE_PNG), "12000");
  EXPECT_LT(std::stoi(draw(2, KR_PICTURE_PNG)), 11800);
  EXPECT_EQ(draw(0, KR_PICTURE_SVG).find("paint-order"), std::string::npos);
  const std::string svg = draw(2, KR_PICTURE_SVG);
  EXPECT_NE(svg.find("stroke=\"#ffffff\" stroke-width=\"4\" paint-order=\"stroke\""),
            std::string::npos)
      << svg;
}

TEST(Picture, NoCallUpsetsIt) {
  SetClock([] { return 46000.0; });
  for (const PictureFormatConst format : {KR_PICTURE_PNG, KR_PICTURE_SVG, KR_PICTURE_PDF}) {
    const std::string blank = CairoPicture(200, 100, format).Encode();
    CairoPicture picture(200, 100, format);
    const auto draw = [&picture](float number) {
      picture.DrawLine(number, number, 0, 50, 0, std::abs(number));
      picture.DrawBox(number, 0, number, number, 0, 1, true);
      picture.DrawCircle(number, 0, std::abs(number), 0, 1, false);
      picture.DrawText("a", number, 0, Style(std::abs(number)));
      picture.SetClip(number, 0, 100, 100);
    };
    for (const float wrong : {NAN, INFINITY, -INFINITY}) draw(wrong);
    for (const float size : {0.0F, -5.0F, NAN}) picture.DrawText("a", 1, 1, Style(size));
    EXPECT_EQ(picture.Encode(), blank);
    for (const float huge : {1e30F, -1e30F, 3e9F}) draw(huge);
    picture.Clear();
    picture.DrawText(std::string(1 << 20, 'x') + "\xFF\xE5\x01\uFDD0\uFFFE\U0001FFFE", 0, 0,
                     Style(10));
    EXPECT_NE(picture.Encode(), blank);
  }
  SetClock({});
  for (const auto& [width, height] : Rows<int, int>{{0, 5}, {5, -1}, {20001, 1}, {10001, 10001}}) {
    EXPECT_THROW(CairoPicture(width, height), AutomationError) << width << " x " << height;
  }
  CairoPicture picture(100, 100);
  picture.DrawBox(0, 0, 100, 100, 0, 1, true);
  for (const auto& [asked, got] : Rows<float, float>{{120.2F, 121}, {NAN, 121}, {1e9F, 20000}}) {
    picture.SetWidth(asked);
    EXPECT_EQ(picture.ScaleWidth(), got);
    EXPECT_EQ(Look(picture).Sum, 0);  // erased
  }
  EXPECT_THROW(picture.Save(TemporaryFolder().Path("none/a.png")), AutomationError);
}

TEST(Picture, PngHasPaletteOrColors) {
  for (const auto& [shades, color_type] : Rows<int, int>{{2, 3}, {255, 3}, {256, 2}}) {
    CairoPicture picture(300, 1);  // white is an additional color
    for (int i = 0; i < shades; ++i) {
      picture.DrawBox(static_cast<float>(i), 0, 1, 1, 0x010000 * i, 1, true);
    }
    EXPECT_EQ(picture.Encode()[25], color_type) << shades;  // in the header
    EXPECT_EQ(Look(picture).Extent, (Box{0, 0, shades, 1})) << shades;
  }
}

TEST(Picture, SvgKeepsTexts) {
  CairoPicture picture(200, 100, KR_PICTURE_SVG);
  picture.SetClip(0, 0, 10, 10);
  picture.DrawText("山田 <&> \"太郎\"\x01", 1, 2, Style(10, "It's \"<&>"));
  pugi::xml_document svg;
  ASSERT_TRUE(svg.load_string(picture.Encode().c_str()));
  const auto text =
      svg.find_node([](auto node) { return std::string_view(node.name()) == "text"; });
  EXPECT_EQ(text.child_value(), std::string("山田 <&> \"太郎\""));
}

// A slanted line has the same weight in every direction and wherever it lies between the pixels,
// and a line that goes on as before adds only its own part.
TEST(Picture, SlantedLinesHaveTheirWeight) {
  const auto ink = [](const Drawing& draw) {
    CairoPicture picture(400, 400);
    draw(picture);
    return Look(picture).Sum;
  };
  for (const float width : {1.0F, 2.0F, 5.0F}) {
    for (const double degrees : {3, 20, 45, 60, 87, 135, 200, 275}) {
      const double angle = degrees * std::numbers::pi / 180;
      const auto at = [&](double length) {
        return std::array{200.3F + static_cast<float>(length * std::cos(angle)),
                          199.6F + static_cast<float>(length * std::sin(angle))};
      };
      const auto line = [&](DrawingSurface& to, double from, double until) {
        const auto [x1, y1] = at(from);
        const auto [x2, y2] = at(until);
        to.DrawLine(x1, y1, x2, y2, 0, width);
      };
      const double whole = ink([&](auto& to) { line(to, 0, 150); });
      const double ends = std::numbers::pi * width * width / 4;
      EXPECT_NEAR(whole, 150 * width + ends, 1.5 + 0.4 * width) << degrees << ", width " << width;
      EXPECT_NEAR(ink([&](auto& to) { line(to, 0, 70), line(to, 70, 150); }), whole, 0.5)
          << degrees << ", width " << width;
    }
  }
  const double clipped = ink([](auto& to) {
    to.SetClip(100, 100, 50, 20);
    to.DrawLine(-1000, -1000, 1000, 1000, 0, 1);
  });
  EXPECT_NEAR(clipped, 20 * std::numbers::sqrt2, 1);
}

// The pixels of a PNG as libpng reads them, 0xRRGGBB.
std::vector<std::uint32_t> ReadPng(const std::string& bytes) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_TRUE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()));
  image.format = PNG_FORMAT_BGRA;
  std::vector<std::uint32_t> pixels(std::size_t{image.width} * image.height);
  EXPECT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) << image.message;
  for (std::uint32_t& pixel : pixels) pixel &= 0xFFFFFF;
  return pixels;
}

// Pictures with exactly that many colors, in stretches and rows of several lengths. The unused byte
// of a pixel may be anything.
TEST(PngWriter, KeepsEveryPixelInTheSmallestForm) {
  struct {
    std::uint32_t colors;
    int bit_depth, color_type;
  } const kCases[] = {{1, 1, 3},  {2, 1, 3},  {3, 2, 3},   {4, 2, 3},   {5, 4, 3},
                      {16, 4, 3}, {17, 8, 3}, {256, 8, 3}, {257, 8, 2}, {3000, 8, 2}};
  PngEncoder encoder;  // one for all, so nothing of a picture may remain for the next
  for (const auto& [colors, bit_depth, color_type] : kCases) {
    for (const std::int32_t width : {1, 7, 64, 333}) {
      const std::int32_t height = static_cast<std::int32_t>(colors) * 2 / width + 3;
      std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height);
      for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::uint32_t color = static_cast<std::uint32_t>(i / 2) % colors;
        pixels[i] = (color * 0x9E3779 & 0xFFFFFF) | static_cast<std::uint32_t>(i) << 24;
      }
      const std::string png = encoder.Encode({pixels.data(), width, height});
      EXPECT_EQ(png[24], bit_depth) << colors << " colors";
      EXPECT_EQ(png[25], color_type) << colors << " colors";
      for (std::uint32_t& pixel : pixels) pixel &= 0xFFFFFF;
      EXPECT_EQ(ReadPng(png), pixels) << colors << " colors, width " << width;
    }
  }
}

}  // namespace
}  // namespace keltrun::test
