// Fonts for pictures and printed pages: which font of the system shows a character, and its
// measures. Everything is in parts of the em square, so it holds for every size.
#pragma once

#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "keltrun2/drawing/font.h"

namespace keltrun {

/// Held while cairo uses fonts: looks them up, opens them, draws with them, gives them back. It
/// opens font files, and lists the faces of each, without a lock of its own.
[[nodiscard]] std::unique_lock<std::mutex> LockFonts();

/// One font of the system, loaded when it is first needed. Everything but `Face` of a loaded one
/// needs the lock.
class FontFile {
 public:
  /// Takes over `pattern`, a match that is ready for drawing. A font without a bold or a slanted
  /// form is emboldened or slanted.
  FontFile(FcPattern* pattern, bool embolden, bool slant);
  ~FontFile();
  FontFile(const FontFile&) = delete;
  FontFile& operator=(const FontFile&) = delete;

  /// Null when the file cannot be used.
  cairo_font_face_t* Face();
  /// Whether the drawing has to slant the letters.
  bool NeedsSlant() const { return needs_slant_; }
  /// As its list of characters says, without opening the file.
  bool HasChar(char32_t c) const;

  struct Measures {
    double Ascent = 0.88;  // above the baseline
    double Descent = 0.12;
    double UnderlineTop = 0.08;  // below the baseline
    double UnderlineThickness = 0.05;
  };
  Measures ReadMeasures();
  std::string Family() const;

  /// Number of the glyph that shows the character, 0 for the box of a missing one.
  unsigned long GlyphIndex(char32_t c);
  double Advance(unsigned long glyph);

 private:
  bool Load();

  FcPattern* pattern_;
  FcCharSet* chars_ = nullptr;  // the pattern's
  cairo_font_face_t* face_ = nullptr;
  cairo_scaled_font_t* scaled_ = nullptr;
  bool needs_slant_ = false;
  bool tried_ = false;
};

/// How one character is drawn.
struct Glyph {
  FontFile* File = nullptr;  // null on a system without any font; its Face() is loaded
  unsigned long Index = 0;
  double Advance = 0;
};

/// A face in a style, and behind it the fonts that stand in for characters it lacks. All threads
/// share it; its members take the lock themselves.
class TypeFace {
 public:
  explicit TypeFace(const Font& font);
  ~TypeFace();
  TypeFace(const TypeFace&) = delete;
  TypeFace& operator=(const TypeFace&) = delete;

  /// The family that was found for it; empty on a system without any font.
  const std::string& Family() const { return family_; }
  const FontFile::Measures& Measures() const { return measures_; }
  /// Appends how the characters of `text` from `pos` on are drawn, at most `most`, and moves `pos`
  /// behind them. Characters that show nothing have no width. The glyphs are valid as long as the
  /// typeface lives.
  void FindGlyphs(std::string_view text, std::size_t& pos, std::size_t most,
                  std::vector<Glyph>& glyphs);
  /// Whether a font has the character.
  bool Shows(char32_t c);
  /// Height of a line.
  double Height() const { return measures_.Ascent + measures_.Descent; }
  double Width(std::string_view text);

 private:
  // Called with the lock.
  const Glyph& Find(char32_t c);
  Glyph Search(char32_t c);
  void FindFiles(const Font& font);

  std::vector<std::unique_ptr<FontFile>> files_;  // best first
  std::unordered_map<char32_t, Glyph> glyphs_;
  std::string family_;
  FontFile::Measures measures_;
};

/// The typeface of a font, kept for the next text.
std::shared_ptr<TypeFace> FindTypeFace(const Font& font);

/// True for characters that take part in no drawing: controls, joiners, variation selectors.
bool IsInvisible(char32_t c);

}  // namespace keltrun
