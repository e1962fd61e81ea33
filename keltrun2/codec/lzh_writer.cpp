#include "keltrun2/codec/lzh_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include "keltrun2/codec/encodings.h"
#include "keltrun2/os/clock.h"
#include "keltrun2/os/files.h"

namespace keltrun {
namespace {

// --- the numbers of the format ---

constexpr std::size_t kWindow = 8192;
constexpr std::size_t kShortestMatch = 3;
constexpr std::size_t kLongestMatch = 256;
constexpr int kLongestCode = 16;  // bits

// The three alphabets of a block. Text: bytes and match lengths. Positions: the number of bits in
// the distance of a match minus one. Lengths: the code lengths of the text alphabet plus two; the
// symbols 0 to 2 stand for runs of unused symbols.
constexpr std::size_t kByteSymbols = 256;
constexpr std::size_t kTextSymbols = kByteSymbols + kLongestMatch - kShortestMatch + 1;
constexpr std::size_t kPositionSymbols = 14;
constexpr std::size_t kLengthSymbols = 19;

// The width in bits of the field that holds the number of symbols of an alphabet or its only
// symbol.
constexpr int kTextCountBits = 9;
constexpr int kPositionCountBits = 4;
constexpr int kLengthCountBits = 5;

// Steps (bytes and matches) in a block. A large block spreads the cost of its tables over more
// steps, a small one adapts better to the data. The format allows at most 65,535.
constexpr std::size_t kBlockSteps = 24576;

// --- bits ---

// Appends bits to bytes, the highest bit first.
class BitWriter {
 public:
  explicit BitWriter(std::string& out) : out_(out) {}

  // Puts the low `count` (0 to 32) bits of `value`; its higher bits must be 0.
  void Put(std::uint32_t value, int count) {
    pending_ = pending_ << count | value;
    pending_bits_ += count;
    while (pending_bits_ >= 8) {
      pending_bits_ -= 8;
      out_ += static_cast<char>(pending_ >> pending_bits_ & 0xFF);
    }
  }

  void FillLastByte() { Put(0, (8 - pending_bits_) % 8); }

 private:
  std::string& out_;
  std::uint64_t pending_ = 0;
  int pending_bits_ = 0;  // below 8 between calls
};

// --- Huffman codes ---

// The Huffman code of an alphabet. Within each code length, codes are assigned in the order of the
// symbols.
template <std::size_t kSymbols>
class Code {
 public:
  using Counts = std::array<std::uint32_t, kSymbols>;

  explicit Code(Counts counts) {
    while (!FindLengths(counts)) {
      // The codes of the rarest symbols are too long. Flatter counts make them shorter.
      for (std::uint32_t& count : counts) count = (count + 1) / 2;
    }
    AssignCodes();
  }

  // The only symbol in use (0 if there is none). Its code has no bits.
  bool HasOneSymbol() const { return used_ <= 1; }
  std::size_t OnlySymbol() const { return only_symbol_; }

  // The number of symbols up to the last one in use.
  std::size_t Count() const {
    std::size_t count = kSymbols;
    while (count > 0 && lengths_[count - 1] == 0) --count;
    return count;
  }
  int Length(std::size_t symbol) const { return lengths_[symbol]; }

  void Put(BitWriter& bits, std::size_t symbol) const {
    bits.Put(codes_[symbol], lengths_[symbol]);
  }

 private:
  // False if a code would be longer than the format allows.
  bool FindLengths(const Counts& counts) {
    std::array<std::pair<std::uint32_t, std::uint16_t>, kSymbols> leaves;  // count, symbol
    used_ = 0;
    for (std::size_t i = 0; i < kSymbols; ++i) {
      if (counts[i] > 0) leaves[used_++] = {counts[i], static_cast<std::uint16_t>(i)};
    }
    lengths_.fill(0);
    only_symbol_ = used_ == 1 ? leaves[0].second : 0;
    if (used_ <= 1) return true;
    std::sort(leaves.begin(), leaves.begin() + static_cast<std::ptrdiff_t>(used_));

    // Joins the two rarest trees until one is left. New trees are made in ascending order of their
    // counts, so the rarest tree is always the first unused leaf or the first unused new tree.
    std::array<std::uint32_t, kSymbols> tree_counts;
    std::array<std::uint16_t, kSymbols> leaf_parents, tree_parents;
    std::size_t next_leaf = 0, next_tree = 0;
    const std::size_t trees = used_ - 1;
    for (std::size_t made = 0; made < trees; ++made) {
      tree_counts[made] = 0;
      for (int child = 0; child < 2; ++child) {
        const bool leaf = next_leaf < used_ &&
                          (next_tree == made || leaves[next_leaf].first <= tree_counts[next_tree]);
        tree_counts[made] += leaf ? leaves[next_leaf].first : tree_counts[next_tree];
        (leaf ? leaf_parents[next_leaf++] : tree_parents[next_tree++]) =
            static_cast<std::uint16_t>(made);
      }
    }
    std::array<std::uint16_t, kSymbols> depths;
    depths[trees - 1] = 0;
    for (std::size_t i = trees - 1; i-- > 0;) {
      depths[i] = static_cast<std::uint16_t>(depths[tree_parents[i]] + 1);
    }
    for (std::size_t i = 0; i < used_; ++i) {
      const int length = depths[leaf_parents[i]] + 1;
      if (length > kLongestCode) return false;
      lengths_[leaves[i].second] = static_cast<std::uint8_t>(length);
    }
    return true;
  }

  void AssignCodes() {
    std::array<std::uint32_t, kLongestCode + 2> next{};
    for (const std::uint8_t length : lengths_) next[length + 1u] += length > 0 ? 1 : 0;
    for (std::size_t i = 1; i < next.size(); ++i) next[i] = (next[i] + next[i - 1]) << 1;
    for (std::size_t i = 0; i < kSymbols; ++i) {
      if (lengths_[i] > 0) codes_[i] = static_cast<std::uint16_t>(next[lengths_[i]]++);
    }
  }

  std::array<std::uint8_t, kSymbols> lengths_;
  std::array<std::uint16_t, kSymbols> codes_{};
  std::size_t used_ = 0;
  std::size_t only_symbol_ = 0;
};

using TextCode = Code<kTextSymbols>;
using PositionCode = Code<kPositionSymbols>;
using LengthCode = Code<kLengthSymbols>;

// --- the tables of a block ---

// The table of an alphabet with one symbol: a count of zero, then that symbol.
void PutOnlySymbol(BitWriter& bits, std::size_t symbol, int count_bits) {
  bits.Put(0, count_bits);
  bits.Put(static_cast<std::uint32_t>(symbol), count_bits);
}

// A code length: 0 to 6 in three bits; from 7 on, three ones, a one for each unit above 7, then a
// zero.
void PutLength(BitWriter& bits, int length) {
  if (length < 7)
    bits.Put(static_cast<std::uint32_t>(length), 3);
  else
    bits.Put((1u << (length - 3)) - 2, length - 3);
}

// The code lengths of a small alphabet. In the table of the length alphabet the third length is
// followed by the number of unused symbols (0 to 3) that are left out.
template <std::size_t kSymbols>
void PutSmallTable(BitWriter& bits, const Code<kSymbols>& code, int count_bits) {
  if (code.HasOneSymbol()) return PutOnlySymbol(bits, code.OnlySymbol(), count_bits);
  const std::size_t count = code.Count();
  bits.Put(static_cast<std::uint32_t>(count), count_bits);
  for (std::size_t i = 0; i < count;) {
    PutLength(bits, code.Length(i++));
    if (kSymbols != kLengthSymbols || i != 3) continue;
    while (i < std::min<std::size_t>(count, 6) && code.Length(i) == 0) ++i;
    bits.Put(static_cast<std::uint32_t>(i - 3), 2);
  }
}

// A step in the code lengths of the text alphabet: a symbol of the length alphabet, followed by
// extra bits.
struct LengthStep {
  std::size_t Symbol;
  std::uint32_t Extra;
  int ExtraBits;
};

// Adds a run of unused symbols.
void AddUnused(std::vector<LengthStep>& steps, std::size_t run) {
  if (run == 19) {  // too many for one short run, too few for a long one
    AddUnused(steps, 1);
    AddUnused(steps, 18);
  } else if (run >= 20) {
    steps.push_back({2, static_cast<std::uint32_t>(run - 20), 9});
  } else if (run >= 3) {
    steps.push_back({1, static_cast<std::uint32_t>(run - 3), 4});
  } else {
    steps.insert(steps.end(), run, {0, 0, 0});
  }
}

std::vector<LengthStep> LengthSteps(const TextCode& code) {
  std::vector<LengthStep> steps;
  std::size_t unused = 0;
  for (std::size_t i = 0; i < code.Count(); ++i) {
    if (code.Length(i) == 0) {
      ++unused;
      continue;
    }
    AddUnused(steps, std::exchange(unused, 0));
    steps.push_back({static_cast<std::size_t>(code.Length(i)) + 2, 0, 0});
  }
  return steps;
}

void PutTextTable(BitWriter& bits, const TextCode& code) {
  if (code.HasOneSymbol()) {
    PutOnlySymbol(bits, 0, kLengthCountBits);
    return PutOnlySymbol(bits, code.OnlySymbol(), kTextCountBits);
  }
  const std::vector<LengthStep> steps = LengthSteps(code);
  LengthCode::Counts counts{};
  for (const LengthStep& step : steps) ++counts[step.Symbol];
  const LengthCode lengths(counts);
  PutSmallTable(bits, lengths, kLengthCountBits);
  bits.Put(static_cast<std::uint32_t>(code.Count()), kTextCountBits);
  for (const LengthStep& step : steps) {
    lengths.Put(bits, step.Symbol);
    bits.Put(step.Extra, step.ExtraBits);
  }
}

// --- blocks ---

// A byte, or a match: so many bytes are the same as so many bytes back.
struct Step {
  std::uint16_t Symbol;    // of the text alphabet
  std::uint16_t Position;  // distance minus one
};

bool IsMatch(const Step& step) { return step.Symbol >= kByteSymbols; }
std::size_t PositionSymbol(const Step& step) {
  return static_cast<std::size_t>(std::bit_width(step.Position));
}

class BlockWriter {
 public:
  explicit BlockWriter(std::string& out) : bits_(out) { steps_.reserve(kBlockSteps); }

  void AddByte(char byte) { Add({static_cast<std::uint8_t>(byte), 0}); }
  void AddMatch(std::size_t length, std::size_t distance) {
    Add({static_cast<std::uint16_t>(kByteSymbols + length - kShortestMatch),
         static_cast<std::uint16_t>(distance - 1)});
  }

  void Finish() {
    if (!steps_.empty()) PutBlock();
    bits_.FillLastByte();
  }

 private:
  void Add(Step step) {
    steps_.push_back(step);
    if (steps_.size() == kBlockSteps) PutBlock();
  }

  void PutBlock() {
    TextCode::Counts text_counts{};
    PositionCode::Counts position_counts{};
    for (const Step& step : steps_) {
      ++text_counts[step.Symbol];
      if (IsMatch(step)) ++position_counts[PositionSymbol(step)];
    }
    const TextCode text(text_counts);
    const PositionCode positions(position_counts);
    bits_.Put(static_cast<std::uint32_t>(steps_.size()), 16);
    PutTextTable(bits_, text);
    PutSmallTable(bits_, positions, kPositionCountBits);
    for (const Step& step : steps_) {
      text.Put(bits_, step.Symbol);
      if (IsMatch(step)) PutPosition(positions, step);
    }
    steps_.clear();
  }

  // Puts the number of bits, then the bits below the highest one.
  void PutPosition(const PositionCode& positions, const Step& step) {
    const std::size_t symbol = PositionSymbol(step);
    positions.Put(bits_, symbol);
    if (symbol < 2) return;
    const int low_bits = static_cast<int>(symbol) - 1;
    bits_.Put(step.Position & ((1u << low_bits) - 1), low_bits);
  }

  BitWriter bits_;
  std::vector<Step> steps_;
};

// --- matches ---

struct Match {
  std::size_t Length = 0;
  std::size_t Distance = 0;
};

// Finds earlier places with the same bytes. Places whose first bytes have the same hash form a
// chain, the latest first.
class MatchFinder {
 public:
  explicit MatchFinder(std::string_view bytes)
      : bytes_(bytes), first_(std::size_t{1} << kHashBits, kNone), earlier_(kWindow, kNone) {}

  // The longest match at `at` that is longer than `better_than`, else an empty one. Places must
  // have been added in order.
  Match Find(std::size_t at, std::size_t better_than) const {
    Match best;
    best.Length = std::max(better_than, kShortestMatch - 1);
    const std::size_t longest = std::min(kLongestMatch, bytes_.size() - at);
    if (longest <= best.Length) return {};
    int chances = kChances;
    for (std::uint32_t place = first_[Hash(at)]; place != kNone && chances-- > 0;) {
      if (at - place >= kWindow) break;  // all further places are even older
      if (bytes_[place + best.Length] == bytes_[at + best.Length]) {
        const std::size_t length = CommonLength(place, at, longest);
        if (length > best.Length) {
          best = {length, at - place};
          if (length >= std::min(longest, kLongEnough)) break;
        }
      }
      const std::uint32_t next = earlier_[place % kWindow];
      if (next >= place) break;  // a later place has overwritten the entry
      place = next;
    }
    return best.Distance > 0 ? best : Match{};
  }

  void Add(std::size_t at) {
    if (at + kHashBytes > bytes_.size()) return;
    std::uint32_t& first = first_[Hash(at)];
    earlier_[at % kWindow] = std::exchange(first, static_cast<std::uint32_t>(at));
  }

 private:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
  static constexpr int kHashBits = 15;
  static constexpr std::size_t kHashBytes = 3;
  static constexpr int kChances = 32;
  static constexpr std::size_t kLongEnough = 128;

  std::size_t Hash(std::size_t at) const {
    const auto byte = [&](std::size_t i) {
      return static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes_[at + i]));
    };
    if (at + kHashBytes > bytes_.size()) return 0;
    return (byte(0) | byte(1) << 8 | byte(2) << 16) * 0x9E3779B1u >> (32 - kHashBits);
  }

  std::size_t CommonLength(std::size_t a, std::size_t b, std::size_t longest) const {
    const char* const p = bytes_.data() + a;
    const char* const q = bytes_.data() + b;
    std::size_t length = 0;
    if constexpr (std::endian::native == std::endian::little) {
      for (; length + 8 <= longest; length += 8) {
        std::uint64_t x, y;
        std::memcpy(&x, p + length, 8);
        std::memcpy(&y, q + length, 8);
        if (x != y) return length + static_cast<std::size_t>(std::countr_zero(x ^ y)) / 8;
      }
    }
    while (length < longest && p[length] == q[length]) ++length;
    return length;
  }

  std::string_view bytes_;
  std::vector<std::uint32_t> first_;    // for each hash, the latest place
  std::vector<std::uint32_t> earlier_;  // for each place, modulo the window: the one before it
};

// Whether a match takes fewer bits than its bytes would: a short match far back does not.
bool IsWorthwhile(const Match& match) {
  return match.Length > kShortestMatch ||
         (match.Length == kShortestMatch && match.Distance <= 1024);
}

// Lazy matching: a match is used unless the next place has a longer one.
std::string Compress(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size() / 4);
  BlockWriter blocks(out);
  MatchFinder finder(bytes);
  Match here;
  for (std::size_t at = 0; at < bytes.size();) {
    if (here.Length == 0) here = finder.Find(at, 0);
    finder.Add(at);
    if (!IsWorthwhile(here)) {
      blocks.AddByte(bytes[at++]);
      here = {};
      continue;
    }
    const Match next = finder.Find(at + 1, here.Length);
    if (next.Length > here.Length) {
      blocks.AddByte(bytes[at++]);
      here = next;
      continue;
    }
    blocks.AddMatch(here.Length, here.Distance);
    for (const std::size_t end = at + here.Length; ++at < end;) finder.Add(at);
    here = {};
  }
  blocks.Finish();
  return out;
}

// --- header ---

void PutNumber(std::string& out, std::uint32_t value, int bytes) {  // lowest byte first
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> 8 * i & 0xFF);
}

// An extended header: its size including these two bytes and the type, the type, the data.
void PutExtension(std::string& out, std::uint8_t type, std::string_view data) {
  PutNumber(out, static_cast<std::uint32_t>(data.size() + 3), 2);
  out += static_cast<char>(type);
  out += data;
}

// The last part of the name in Shift-JIS. Single bytes that other programs take for a separator or
// a reserved character are replaced; a byte after a lead byte is not a character of its own.
std::string MemberName(std::string_view name) {
  constexpr std::size_t kLongestName = 255;
  constexpr std::string_view kReserved = "\"*/:<>?\\|";
  std::string encoded;
  AppendEncoded(encoded, FileNamePart(name), Charset::kShiftJis, MissingCharacter::kQuestionMark);
  std::string out;
  for (std::size_t at = 0; at < encoded.size();) {
    const auto byte = static_cast<std::uint8_t>(encoded[at]);
    const std::size_t size = IsShiftJisLead(byte) && at + 1 < encoded.size() ? 2 : 1;
    if (out.size() + size > kLongestName) break;
    const bool bad = byte < 0x20 || kReserved.find(encoded[at]) != std::string_view::npos;
    if (bad)
      out += '_';
    else
      out.append(encoded, at, size);
    at += size;
  }
  return out.empty() ? "_" : out;
}

// Converts a local day number to seconds since 1970, UTC.
std::uint32_t UnixTime(double modified) {
  constexpr double kLast = std::numeric_limits<std::uint32_t>::max();
  const double seconds = std::round((modified - kDaysTo1970) * 86400);
  if (!(seconds > 0)) return 0;
  const auto as_utc = static_cast<std::time_t>(std::min(seconds, kLast));
  std::tm local{};
  gmtime_r(&as_utc, &local);
  local.tm_isdst = -1;
  const auto moment = static_cast<double>(std::mktime(&local));
  return static_cast<std::uint32_t>(std::clamp(moment, 0.0, kLast));
}

struct Member {
  std::string Name;  // Shift-JIS
  std::string_view Bytes;
  std::string_view Packed;
  bool Stored;
  std::uint32_t Modified;
};

std::string Level2Header(const Member& member) {
  std::string out(2, '\0');  // the size, filled in at the end
  out += member.Stored ? "-lh0-" : "-lh5-";
  PutNumber(out, static_cast<std::uint32_t>(member.Packed.size()), 4);
  PutNumber(out, static_cast<std::uint32_t>(member.Bytes.size()), 4);
  PutNumber(out, member.Modified, 4);
  out += "\x20\x02";  // a plain file; header level
  PutNumber(out, LzhCrc16(member.Bytes), 2);
  out += 'w';  // 32-bit system with Shift-JIS names: other programs then keep the case of the name
  const std::size_t crc_at = out.size() + 3;
  PutExtension(out, 0x00, std::string_view("\0\0", 2));  // CRC of the header, 0 while computing it
  PutExtension(out, 0x01, member.Name);
  PutExtension(out, 0x46, std::string_view("\xA4\x03\0\0", 4));  // code page of the name: 932
  PutNumber(out, 0, 2);                                          // no more extended headers
  if (out.size() % 256 == 0) out += '\0';  // a first byte of 0 would mark the end of the archive
  std::string number;
  PutNumber(number, static_cast<std::uint32_t>(out.size()), 2);
  out.replace(0, 2, number);
  number.clear();
  PutNumber(number, LzhCrc16(out), 2);
  out.replace(crc_at, 2, number);
  return out;
}

// --- checksum ---

constexpr auto kCrcTable = [] {
  std::array<std::uint16_t, 256> table{};
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t crc = i;
    for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    table[i] = static_cast<std::uint16_t>(crc);
  }
  return table;
}();

}  // namespace

std::uint16_t LzhCrc16(std::string_view bytes, std::uint16_t before) {
  std::uint32_t crc = before;
  for (const char c : bytes)
    crc = crc >> 8 ^ kCrcTable[(crc ^ static_cast<std::uint8_t>(c)) & 0xFF];
  return static_cast<std::uint16_t>(crc);
}

std::string MakeLzhArchive(std::string_view member_name_utf8, std::string_view bytes,
                           double modified) {
  const std::string compressed = Compress(bytes);
  const bool stored = compressed.size() >= bytes.size();
  const Member member{MemberName(member_name_utf8), bytes, stored ? bytes : compressed, stored,
                      UnixTime(modified)};
  std::string archive = Level2Header(member);
  archive += member.Packed;
  archive += '\0';  // end of the archive
  return archive;
}

}  // namespace keltrun
