// Fonts for pictures and printed pages: which font of the system has a character, and its measures.
// All measures are in em, so that they apply to every size.
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

/// Takes the lock that must be held while cairo finds, opens, draws with or releases fonts. Cairo
/// opens font files, and keeps the list of the faces of each, without a lock of its own.
[[nodiscard]] std::unique_lock<std::mutex> LockFonts();

/// One font of the system, loaded when it is first needed. All members must be called with the
/// lock, except `Face` once the font is loaded.
class FontFile {
 public:
  /// Takes ownership of `pattern`, a match that is ready for drawing. `embolden` and `slant` are
  /// true for a font that does not have the bold or slanted form asked for.
  FontFile(FcPattern* pattern, bool embolden, bool slant);
  ~FontFile();
  FontFile(const FontFile&) = delete;
  FontFile& operator=(const FontFile&) = delete;

  /// The font as cairo knows it; null if the file cannot be used.
  cairo_font_face_t* Face();
  /// Whether the drawing has to slant the letters.
  bool NeedsSlant() const { return needs_slant_; }
  /// Whether the font lists the character. Does not open the file.
  bool HasChar(char32_t c) const;

  struct Measures {
    double Ascent = 0.88;  // above the baseline
    double Descent = 0.12;
    double UnderlineTop = 0.08;  // below the baseline
    double UnderlineThickness = 0.05;
  };
  Measures ReadMeasures();
  std::string Family() const;

  /// The number of the glyph for the character; 0, which is the box for missing characters, if
  /// there is none.
  unsigned long GlyphIndex(char32_t c);
  double Advance(unsigned long glyph);

 private:
  bool Load();

  FcPattern* pattern_;
  FcCharSet* chars_ = nullptr;  // owned by the pattern
  cairo_font_face_t* face_ = nullptr;
  cairo_scaled_font_t* scaled_ = nullptr;
  bool needs_slant_ = false;
  bool tried_ = false;
};

/// How one character is drawn.
struct Glyph {
  FontFile* File = nullptr;  // loaded; null for invisible characters and on systems without fonts
  unsigned long Index = 0;
  double Advance = 0;
};

/// A face in a style, followed by the fonts that are used for characters that it does not have. All
/// threads share it; its public members take the lock themselves.
class TypeFace {
 public:
  explicit TypeFace(const Font& font);
  ~TypeFace();
  TypeFace(const TypeFace&) = delete;
  TypeFace& operator=(const TypeFace&) = delete;

  /// The family that was found for it; empty on a system without fonts.
  const std::string& Family() const { return family_; }
  const FontFile::Measures& Measures() const { return measures_; }
  /// Appends the glyphs of at most `most` characters of `text` from `pos` on, and moves `pos` past
  /// them. Invisible characters have no width. The glyphs are valid as long as the typeface exists.
  void FindGlyphs(std::string_view text, std::size_t& pos, std::size_t most,
                  std::vector<Glyph>& glyphs);
  /// Whether a font has the character.
  bool Shows(char32_t c);
  /// Height of a line.
  double Height() const { return measures_.Ascent + measures_.Descent; }
  double Width(std::string_view text);

 private:
  // These must be called with the lock.
  const Glyph& Find(char32_t c);
  Glyph Search(char32_t c);
  void FindFiles(const Font& font);

  std::vector<std::unique_ptr<FontFile>> files_;  // best first
  std::unordered_map<char32_t, Glyph> glyphs_;
  std::string family_;
  FontFile::Measures measures_;
};

/// The typeface of a font. The ones used most recently are kept for the next text.
std::shared_ptr<TypeFace> FindTypeFace(const Font& font);

/// Whether a character is never drawn: control characters, joiners, variation selectors.
bool IsInvisible(char32_t c);

}  // namespace keltrun
