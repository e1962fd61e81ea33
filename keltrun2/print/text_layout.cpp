#include "keltrun2/print/text_layout.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/text/split.h"

namespace keltrun {
namespace {

constexpr std::string_view kEllipsis = "\u2026";
constexpr float kDigitsPerTab = 8;
constexpr char32_t kJoiner = 0x200D;
constexpr char32_t kFirstFlagLetter = 0x1F1E6;  // two of these letters are a flag
constexpr char32_t kLastFlagLetter = 0x1F1FF;

struct CharacterRange {
  char32_t first, last;
};

// Characters that belong to the one before them.
constexpr CharacterRange kExtending[] = {
    {0x0300, 0x036F},    // combining diacritical marks
    {0x0483, 0x0489},    // Cyrillic marks
    {0x0591, 0x05BD},    // Hebrew points
    {0x064B, 0x065F},    // Arabic points
    {0x0E31, 0x0E31},    // Thai vowels and tones above and below
    {0x0E34, 0x0E3A},    //
    {0x0E47, 0x0E4E},    //
    {0x1160, 0x11FF},    // Hangul vowels and finals
    {0x1AB0, 0x1AFF},    // further diacritical marks
    {0x1DC0, 0x1DFF},    //
    {0x200D, 0x200D},    // joiner
    {0x20D0, 0x20FF},    // marks for symbols
    {0x3099, 0x309A},    // kana voicing marks
    {0xFE00, 0xFE0F},    // variation selectors
    {0xFE20, 0xFE2F},    // half marks
    {0xFF9E, 0xFF9F},    // half-width kana voicing marks
    {0x1F3FB, 0x1F3FF},  // skin tones
    {0xE0100, 0xE01EF},  // variation selectors of ideographs
};

bool Extends(char32_t c) {
  return std::any_of(
      std::begin(kExtending), std::end(kExtending),
      [c](const CharacterRange& range) { return c >= range.first && c <= range.last; });
}

// Distances run along the writing and, from line to line, across it.
class Layout {
 public:
  Layout(DrawingSurface& surface, const TextBox& box, const TextStyle& style)
      : surface_(surface),
        box_(box),
        style_(style),
        length_(style.Turned ? box.Height : box.Width),
        depth_(style.Turned ? box.Width : box.Height) {}

  void Draw() {
    const std::vector<std::string_view> lines = SplitLines(box_.Text);
    const auto count = static_cast<float>(lines.size());
    const float line_height = surface_.TextHeight(style_);
    const float free = depth_ - count * line_height;
    const bool spread = IsEqual(box_.Valign) && lines.size() > 1 && free > 0;
    const float step = line_height + (spread ? free / (count - 1) : 0);
    float across = spread ? 0 : Offset(box_.Valign, free);
    for (const std::string_view line : lines) {
      DrawOneLine(line, across);
      across += step;
    }
  }

 private:
  // For both kinds of alignment: 0 is the beginning of the box, 1 its middle, 2 its end, and 3
  // spreads the parts over it (in the middle if they cannot be spread).
  static float Offset(std::int32_t alignment, float free) {
    switch (alignment) {
      case PRINTBOOK_ALIGN_CENTER:
      case tpatEqual:
        return free / 2;
      case PRINTBOOK_ALIGN_RIGHT:
        return free;
      default:
        return 0;
    }
  }

  static bool IsEqual(std::int32_t alignment) { return alignment == tpatEqual; }

  void DrawOneLine(std::string_view line, float across) {
    if (line.empty()) return;
    if (box_.Align == PRINTBOOK_ALIGN_LEFT && !box_.Cut) {
      DrawPieces(line, 0, across);
      return;
    }
    std::string cut;
    float free = length_ - LineWidth(line);
    if (box_.Cut && free < 0) {
      line = cut = CutLine(line);
      free = length_ - LineWidth(line);
    }
    if (IsEqual(box_.Align) && free > 0 && SpreadLine(line, free, across)) return;
    DrawPieces(line, Offset(box_.Align, free), across);
  }

  // False for a line of one character.
  bool SpreadLine(std::string_view line, float free, float across) {
    const std::vector<std::size_t> ends = CharacterEnds(line);
    if (ends.size() < 2) return false;
    const float gap = free / static_cast<float>(ends.size() - 1);
    float along = 0;
    std::size_t start = 0;
    for (const std::size_t end : ends) {
      const std::string_view character = line.substr(start, end - start);
      DrawPiece(character, along, across);
      along += surface_.TextWidth(character, style_) + gap;
      start = end;
    }
    return true;
  }

  void DrawPieces(std::string_view line, float along, float across) {
    WalkPieces(line, [&](std::string_view piece, float offset) {
      DrawPiece(piece, along + offset, across);
    });
  }

  void DrawPiece(std::string_view piece, float along, float across) {
    if (piece.empty()) return;
    if (style_.Turned) {
      surface_.DrawText(piece, box_.Left + box_.Width - across, box_.Top + along, style_);
    } else {
      surface_.DrawText(piece, box_.Left + along, box_.Top + across, style_);
    }
  }

  // The pieces between tabs, each with its distance from the beginning of the line.
  template <typename Visit>
  void WalkPieces(std::string_view line, Visit visit) {
    float along = 0;
    for (std::size_t tab; (tab = line.find('\t')) != std::string_view::npos;) {
      const std::string_view piece = line.substr(0, tab);
      visit(piece, along);
      along = NextTab(along + surface_.TextWidth(piece, style_));
      line.remove_prefix(tab + 1);
    }
    visit(line, along);
  }

  float NextTab(float along) {
    const float distance = kDigitsPerTab * surface_.TextWidth("0", style_);
    return distance > 0 ? (std::floor(along / distance) + 1) * distance : along;
  }

  float LineWidth(std::string_view line) {
    float width = 0;
    WalkPieces(line, [&](std::string_view piece, float offset) {
      width = offset;
      line = piece;
    });
    return width + surface_.TextWidth(line, style_);
  }

  // The longest beginning that fits together with the ellipsis; "" when the ellipsis alone is too
  // long.
  std::string CutLine(std::string_view line) {
    const std::vector<std::size_t> ends = CharacterEnds(line);
    const auto with_ellipsis = [&](std::size_t end) {
      std::string cut(line.substr(0, end));
      while (cut.ends_with(' ')) cut.pop_back();
      return cut.append(kEllipsis);
    };
    const auto too_long = std::partition_point(ends.begin(), ends.end(), [&](std::size_t end) {
      return LineWidth(with_ellipsis(end)) <= length_;
    });
    const std::string cut = with_ellipsis(too_long == ends.begin() ? 0 : *(too_long - 1));
    return LineWidth(cut) <= length_ ? cut : "";
  }

  DrawingSurface& surface_;
  const TextBox& box_;
  const TextStyle& style_;
  float length_;  // of the box along the writing
  float depth_;   // across it
};

}  // namespace

void DrawTextInBox(DrawingSurface& surface, const TextBox& box, const TextStyle& style) {
  Layout(surface, box, style).Draw();
}

std::vector<std::size_t> CharacterEnds(std::string_view text) {
  std::vector<std::size_t> ends;
  bool joined = false;
  bool half_flag = false;
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    const bool flag_letter = c >= kFirstFlagLetter && c <= kLastFlagLetter;
    if (!ends.empty() && (joined || Extends(c) || (half_flag && flag_letter))) {
      ends.back() = pos;
    } else {
      ends.push_back(pos);
    }
    joined = c == kJoiner;
    half_flag = flag_letter && !half_flag;
  }
  return ends;
}

}  // namespace keltrun
