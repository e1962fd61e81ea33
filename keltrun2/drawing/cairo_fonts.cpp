#include "keltrun2/drawing/cairo_fonts.h"

#include <cairo-ft.h>

#include <algorithm>
#include <list>
#include <mutex>
#include <utility>

#include "keltrun2/codec/utf8.h"
#include "keltrun2/drawing/cairo_picture.h"

namespace keltrun {
namespace {

// Bounds of the caches: far more than a program needs, but a hostile text cannot fill the memory.
constexpr std::size_t kMostGlyphs = 8192;
constexpr std::size_t kMostTypeFaces = 32;

// The FreeType face of a scaled font, locked while this object exists; null if the file cannot be
// used.
class LockedFace {
 public:
  explicit LockedFace(cairo_scaled_font_t* font)
      : font_(font), face_(cairo_ft_scaled_font_lock_face(font)) {}
  ~LockedFace() {
    if (face_ != nullptr) cairo_ft_scaled_font_unlock_face(font_);
  }
  LockedFace(const LockedFace&) = delete;
  LockedFace& operator=(const LockedFace&) = delete;

  explicit operator bool() const { return face_ != nullptr; }
  FT_Face operator->() const { return face_; }
  FT_Face get() const { return face_; }
  double InEm(long units) const {
    return face_->units_per_EM == 0 ? 0 : static_cast<double>(units) / face_->units_per_EM;
  }

 private:
  cairo_scaled_font_t* font_;
  FT_Face face_;
};

int PatternInteger(FcPattern* pattern, const char* object, int missing) {
  int value = missing;
  return FcPatternGetInteger(pattern, object, 0, &value) == FcResultMatch ? value : missing;
}

bool IsScalable(FcPattern* pattern) {
  FcBool scalable = FcFalse;
  return FcPatternGetBool(pattern, FC_SCALABLE, 0, &scalable) == FcResultMatch && scalable;
}

bool IsBold(FcPattern* pattern) {
  return PatternInteger(pattern, FC_WEIGHT, FC_WEIGHT_REGULAR) >= FC_WEIGHT_DEMIBOLD;
}

bool IsSlanted(FcPattern* pattern) {
  return PatternInteger(pattern, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN;
}

struct PatternDeleter {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

struct FontSetDeleter {
  void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
using FontSet = std::unique_ptr<FcFontSet, FontSetDeleter>;

// The fonts of the system, read once. The current configuration of fontconfig is not used: it
// belongs to the host, and it would never be freed.
FcConfig* SystemFonts() {
  struct ConfigDeleter {
    void operator()(FcConfig* config) const { FcConfigDestroy(config); }
  };
  static const std::unique_ptr<FcConfig, ConfigDeleter> config(FcInitLoadConfigAndFonts());
  return config.get();
}

// The pattern to search with. If the system does not have the face, the language makes the search
// prefer a Japanese font; if it does, the face matters more than the language.
Pattern Wanted(const Font& font) {
  Pattern pattern(FcPatternCreate());
  const std::string face = ValidUtf8(font.Face());
  FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(face.c_str()));
  FcPatternAddString(pattern.get(), FC_LANG, reinterpret_cast<const FcChar8*>("ja"));
  FcPatternAddInteger(pattern.get(), FC_WEIGHT, font.Bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
  FcPatternAddInteger(pattern.get(), FC_SLANT, font.Italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcConfigSubstitute(SystemFonts(), pattern.get(), FcMatchPattern);
  FcDefaultSubstitute(pattern.get());
  return pattern;
}

// The fonts of the system, best match first, without those that add no characters.
std::vector<std::unique_ptr<FontFile>> SortedFiles(const Font& font) {
  const Pattern wanted = Wanted(font);
  FcResult result = FcResultMatch;
  const FontSet sorted(FcFontSort(SystemFonts(), wanted.get(), FcTrue, nullptr, &result));
  std::vector<std::unique_ptr<FontFile>> files;
  if (!sorted) return files;
  for (int i = 0; i < sorted->nfont; ++i) {
    FcPattern* match = sorted->fonts[i];
    if (!IsScalable(match)) continue;
    if (FcPattern* ready = FcFontRenderPrepare(SystemFonts(), wanted.get(), match)) {
      files.push_back(std::make_unique<FontFile>(ready, font.Bold && !IsBold(match),
                                                 font.Italic && !IsSlanted(match)));
    }
  }
  return files;
}

// Some fonts contain bitmaps for small sizes, which would not match the rest of a picture.
void UseOutlinesOnly(FcPattern* pattern) {
  FcPatternDel(pattern, FC_EMBEDDED_BITMAP);
  FcPatternAddBool(pattern, FC_EMBEDDED_BITMAP, FcFalse);
}

// Set in the pattern, not in the face, because cairo shares one face between equal patterns.
void SetEmbolden(FcPattern* pattern, bool embolden) {
  FcPatternDel(pattern, FC_EMBOLDEN);
  FcPatternAddBool(pattern, FC_EMBOLDEN, embolden ? FcTrue : FcFalse);
}

}  // namespace

std::unique_lock<std::mutex> LockFonts() {
  static std::mutex mutex;
  return std::unique_lock(mutex);
}

bool IsInvisible(char32_t c) {
  // Noncharacters (the last two of each plane and U+FDD0 to U+FDEF) would put cairo into an error
  // state, in which it draws nothing more.
  if ((c & 0xFFFE) == 0xFFFE || (c >= 0xFDD0 && c <= 0xFDEF)) return true;
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD || (c >= 0x200B && c <= 0x200F) ||
         (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) ||
         (c >= 0xFE00 && c <= 0xFE0F) || c == 0xFEFF || (c >= 0xE0000 && c <= 0xE0FFF);
}

// --- one font ---

FontFile::FontFile(FcPattern* pattern, bool embolden, bool slant)
    : pattern_(pattern), needs_slant_(slant) {
  if (FcPatternGetCharSet(pattern, FC_CHARSET, 0, &chars_) != FcResultMatch) chars_ = nullptr;
  SetEmbolden(pattern, embolden);
  UseOutlinesOnly(pattern);
}

FontFile::~FontFile() {
  if (scaled_ != nullptr) cairo_scaled_font_destroy(scaled_);
  if (face_ != nullptr) cairo_font_face_destroy(face_);
  FcPatternDestroy(pattern_);
}

bool FontFile::Load() {
  if (tried_) return face_ != nullptr;  // no longer changes, so drawing threads need no lock
  tried_ = true;
  cairo_font_face_t* face = cairo_ft_font_face_create_for_pattern(pattern_);
  cairo_matrix_t size;
  cairo_matrix_t identity;
  cairo_matrix_init_scale(&size, 100, 100);  // any size will do: measures are read unscaled
  cairo_matrix_init_identity(&identity);
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_scaled_font_t* scaled = cairo_scaled_font_create(face, &size, &identity, options);
  cairo_font_options_destroy(options);
  if (LockedFace(scaled)) {
    face_ = face;
    scaled_ = scaled;
    return true;
  }
  cairo_scaled_font_destroy(scaled);
  cairo_font_face_destroy(face);
  return false;
}

cairo_font_face_t* FontFile::Face() { return Load() ? face_ : nullptr; }

bool FontFile::HasChar(char32_t c) const {
  return chars_ != nullptr && FcCharSetHasChar(chars_, c);
}

std::string FontFile::Family() const {
  FcChar8* family = nullptr;
  const bool known = FcPatternGetString(pattern_, FC_FAMILY, 0, &family) == FcResultMatch;
  return known ? reinterpret_cast<const char*>(family) : "";
}

FontFile::Measures FontFile::ReadMeasures() {
  Measures measures;
  if (!Load()) return measures;
  const LockedFace face(scaled_);
  if (!face || face->ascender <= face->descender) return measures;
  measures.Ascent = face.InEm(face->ascender);
  measures.Descent = -face.InEm(face->descender);
  if (face->underline_thickness <= 0) return measures;
  measures.UnderlineThickness = face.InEm(face->underline_thickness);
  // The position in the font is that of the middle of the line.
  measures.UnderlineTop = -face.InEm(face->underline_position) - measures.UnderlineThickness / 2;
  return measures;
}

unsigned long FontFile::GlyphIndex(char32_t c) {
  if (!Load()) return 0;
  const LockedFace face(scaled_);
  return face ? FT_Get_Char_Index(face.get(), c) : 0;
}

double FontFile::Advance(unsigned long glyph) {
  if (!Load()) return 0;
  const LockedFace face(scaled_);
  if (!face || FT_Load_Glyph(face.get(), static_cast<FT_UInt>(glyph), FT_LOAD_NO_SCALE) != 0) {
    return 0;
  }
  return face.InEm(face->glyph->metrics.horiAdvance);
}

// --- a face with its substitutes ---

TypeFace::TypeFace(const Font& font) {
  const auto lock = LockFonts();
  FindFiles(font);
}

TypeFace::~TypeFace() {
  const auto lock = LockFonts();
  files_.clear();
}

void TypeFace::FindFiles(const Font& font) {
  files_ = SortedFiles(font);
  std::erase_if(files_, [usable = false](const auto& file) mutable {
    usable = usable || file->Face() != nullptr;  // the first usable file becomes the face itself
    return !usable;
  });
  if (files_.empty()) return;
  family_ = files_.front()->Family();
  measures_ = files_.front()->ReadMeasures();
}

Glyph TypeFace::Search(char32_t c) {
  if (files_.empty()) return {nullptr, 0, c < 0x1100 ? 0.5 : 1.0};
  for (const auto& file : files_) {
    if (!file->HasChar(c)) continue;
    if (const unsigned long index = file->GlyphIndex(c)) {
      return {file.get(), index, file->Advance(index)};
    }
  }
  return {files_.front().get(), 0, files_.front()->Advance(0)};
}

const Glyph& TypeFace::Find(char32_t c) {
  if (c == U'\t') c = U' ';
  if (const auto known = glyphs_.find(c); known != glyphs_.end()) return known->second;
  if (glyphs_.size() >= kMostGlyphs) glyphs_.clear();
  return glyphs_.emplace(c, IsInvisible(c) ? Glyph{} : Search(c)).first->second;
}

void TypeFace::FindGlyphs(std::string_view text, std::size_t& pos, std::size_t most,
                          std::vector<Glyph>& glyphs) {
  const auto lock = LockFonts();
  for (; pos < text.size() && most > 0; --most) glyphs.push_back(Find(NextCodePoint(text, pos)));
}

bool TypeFace::Shows(char32_t c) {
  const auto lock = LockFonts();
  return Find(c).Index != 0;
}

double TypeFace::Width(std::string_view text) {
  const auto lock = LockFonts();
  double width = 0;
  for (std::size_t pos = 0; pos < text.size();) width += Find(NextCodePoint(text, pos)).Advance;
  return width;
}

namespace {

// The typefaces used most recently, shared by all threads.
class TypeFaceCache {
 public:
  // Null if the typeface is not in the cache.
  std::shared_ptr<TypeFace> Find(const Font& font) {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(kept_.begin(), kept_.end(), [&font](const Kept& entry) {
      return entry.bold == font.Bold && entry.italic == font.Italic && entry.face == font.Face();
    });
    if (found == kept_.end()) return nullptr;
    kept_.splice(kept_.begin(), kept_, found);
    return found->type;
  }

  void Keep(const Font& font, std::shared_ptr<TypeFace> type) {
    std::list<Kept> dropped;  // destroyed after the lock is released
    const std::lock_guard lock(mutex_);
    kept_.push_front({font.Face(), font.Bold, font.Italic, std::move(type)});
    if (kept_.size() > kMostTypeFaces) dropped.splice(dropped.begin(), kept_, --kept_.end());
  }

 private:
  struct Kept {
    std::string face;
    bool bold;
    bool italic;
    std::shared_ptr<TypeFace> type;
  };

  std::mutex mutex_;
  std::list<Kept> kept_;  // most recently used first
};

}  // namespace

std::shared_ptr<TypeFace> FindTypeFace(const Font& font) {
  // Created before the cache, so that the system's fonts and the lock outlive the typefaces in it.
  SystemFonts();
  LockFonts().unlock();
  static TypeFaceCache cache;
  if (auto known = cache.Find(font)) return known;
  auto made = std::make_shared<TypeFace>(font);  // harmless if two threads make the same one
  cache.Keep(font, made);
  return made;
}

bool HasJapaneseFont() {
  const auto face = FindTypeFace(Font());
  return face->Shows(U'あ') && face->Shows(U'漢');
}

}  // namespace keltrun
