#include "keltrun2/io/foreign/page_texts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"
#include "keltrun2/text/width.h"

namespace keltrun {
namespace {

struct StatusWord {
  std::string_view word;  // as PageWord gives it
  RunnerStatus status;
};

// English, German, French, Swedish, Norwegian, Danish, Finnish, Czech and Japanese.
constexpr RunnerStatus kMp = RunnerStatus::kMissingPunch;
constexpr RunnerStatus kDnf = RunnerStatus::kDidNotFinish;
constexpr RunnerStatus kDns = RunnerStatus::kDidNotStart;
constexpr RunnerStatus kDsq = RunnerStatus::kDisqualified;
constexpr RunnerStatus kOver = RunnerStatus::kOverTime;
constexpr RunnerStatus kOutside = RunnerStatus::kNotCompeting;
constexpr StatusWord kStatusWords[] = {
    {"mp", kMp},
    {"mispunch", kMp},
    {"mispunched", kMp},
    {"missingpunch", kMp},
    {"mispunching", kMp},
    {"wrongpunch", kMp},
    {"fehlst", kMp},
    {"fehlstempel", kMp},
    {"fehlstemp", kMp},
    {"postenfehlt", kMp},
    {"pfehlt", kMp},
    {"pfalsch", kMp},
    {"falsch", kMp},
    {"pm", kMp},
    {"posteman", kMp},
    {"postemanquant", kMp},
    {"felst", kMp},
    {"felstämplat", kMp},
    {"felstämpl", kMp},
    {"feilst", kMp},
    {"feilstemplet", kMp},
    {"fejlklip", kMp},
    {"fejlst", kMp},
    {"fejlstemplet", kMp},
    {"leimpuuttuu", kMp},
    {"chybíražení", kMp},
    {"失格mp", kMp},
    {"dnf", kDnf},
    {"didnotfinish", kDnf},
    {"retired", kDnf},
    {"rtd", kDnf},
    {"ret", kDnf},
    {"aufg", kDnf},
    {"aufgegeben", kDnf},
    {"aufgabe", kDnf},
    {"abandon", kDnf},
    {"aband", kDnf},
    {"abd", kDnf},
    {"utg", kDnf},
    {"utgått", kDnf},
    {"utgick", kDnf},
    {"brutit", kDnf},
    {"brutet", kDnf},
    {"brutt", kDnf},
    {"brøt", kDnf},
    {"udg", kDnf},
    {"udgået", kDnf},
    {"udgik", kDnf},
    {"kesk", kDnf},
    {"keskeytti", kDnf},
    {"keskeyttänyt", kDnf},
    {"vzdal", kDnf},
    {"vzdala", kDnf},
    {"vzdali", kDnf},
    {"nedokončil", kDnf},
    {"棄権", kDnf},
    {"途中棄権", kDnf},
    {"dns", kDns},
    {"didnotstart", kDns},
    {"nang", kDns},
    {"nichtangetreten", kDns},
    {"nichtgestartet", kDns},
    {"ngest", kDns},
    {"na", kDns},
    {"absent", kDns},
    {"nonpartant", kDns},
    {"nonpart", kDns},
    {"np", kDns},
    {"ejstart", kDns},
    {"ejst", kDns},
    {"ejstartat", kDns},
    {"ejstartet", kDns},
    {"ikkestart", kDns},
    {"ikkestartet", kDns},
    {"startetikke", kDns},
    {"deltarej", kDns},
    {"eilähtenyt", kDns},
    {"eiläht", kDns},
    {"eistartannut", kDns},
    {"poissa", kDns},
    {"nestart", kDns},
    {"nestartoval", kDns},
    {"nestartovala", kDns},
    {"欠場", kDns},
    {"未出走", kDns},
    {"disq", kDsq},
    {"disqualified", kDsq},
    {"dsq", kDsq},
    {"dq", kDsq},
    {"disqu", kDsq},
    {"disqualifiziert", kDsq},
    {"disqualifié", kDsq},
    {"disk", kDsq},
    {"diskad", kDsq},
    {"diskv", kDsq},
    {"diskvalificerad", kDsq},
    {"diskvalifisert", kDsq},
    {"diskvalificeret", kDsq},
    {"diskvalifikován", kDsq},
    {"hyl", kDsq},
    {"hylätty", kDsq},
    {"失格", kDsq},
    {"ot", kOver},
    {"overtime", kOver},
    {"ovt", kOver},
    {"zeitüb", kOver},
    {"überzeit", kOver},
    {"maxzeit", kOver},
    {"horsdélai", kOver},
    {"horsdelai", kOver},
    {"maxtid", kOver},
    {"övermaxtid", kOver},
    {"makstid", kOver},
    {"overmakstid", kOver},
    {"overtid", kOver},
    {"yliaika", kOver},
    {"limit", kOver},
    {"nc", kOutside},
    {"noncompetitive", kOutside},
    {"notcompeting", kOutside},
    {"ak", kOutside},
    {"auserkonkurrenz", kOutside},
    {"außerkonkurrenz", kOutside},
    {"hc", kOutside},
    {"horscomp", kOutside},
    {"horsconcours", kOutside},
    {"uttävl", kOutside},
    {"utomtävlan", kOutside},
    {"utk", kOutside},
    {"utenforkonk", kOutside},
    {"utenforkonkurranse", kOutside},
    {"udenforkonk", kOutside},
    {"udenforkonkurrence", kOutside},
    {"mimosoutěž", kOutside},
    {"ms", kOutside},
    {"オープン", kOutside},
};

struct TitleWord {
  std::string_view word;  // as PageWord gives it
  ColumnTitle title;
};

constexpr ColumnTitle kPlace = ColumnTitle::kPlace;
constexpr ColumnTitle kBib = ColumnTitle::kBib;
constexpr ColumnTitle kName = ColumnTitle::kName;
constexpr ColumnTitle kClub = ColumnTitle::kClub;
constexpr ColumnTitle kClass = ColumnTitle::kClass;
constexpr ColumnTitle kTime = ColumnTitle::kTime;
constexpr ColumnTitle kCard = ColumnTitle::kCard;
constexpr ColumnTitle kBehind = ColumnTitle::kBehind;
constexpr ColumnTitle kUnused = ColumnTitle::kUnused;
constexpr TitleWord kTitleWords[] = {
    {"pl", kPlace},
    {"place", kPlace},
    {"pos", kPlace},
    {"position", kPlace},
    {"rank", kPlace},
    {"rang", kPlace},
    {"rg", kPlace},
    {"platz", kPlace},
    {"plac", kPlace},
    {"plats", kPlace},
    {"placering", kPlace},
    {"plass", kPlace},
    {"plads", kPlace},
    {"sija", kPlace},
    {"sij", kPlace},
    {"clt", kPlace},
    {"poř", kPlace},
    {"pořadí", kPlace},
    {"順位", kPlace},
    {"stno", kBib},
    {"startno", kBib},
    {"startnumber", kBib},
    {"bib", kBib},
    {"bibno", kBib},
    {"no", kBib},
    {"nr", kBib},
    {"stnr", kBib},
    {"startnr", kBib},
    {"startnummer", kBib},
    {"nummer", kBib},
    {"dossard", kBib},
    {"doss", kBib},
    {"nodos", kBib},
    {"nodep", kBib},
    {"nro", kBib},
    {"numero", kBib},
    {"stčís", kBib},
    {"číslo", kBib},
    {"ナンバー", kBib},
    {"name", kName},
    {"runner", kName},
    {"competitor", kName},
    {"athlete", kName},
    {"nom", kName},
    {"nomprénom", kName},
    {"namn", kName},
    {"navn", kName},
    {"nimi", kName},
    {"jméno", kName},
    {"příjmení", kName},
    {"氏名", kName},
    {"名前", kName},
    {"club", kClub},
    {"city", kClub},
    {"team", kClub},
    {"organisation", kClub},
    {"organization", kClub},
    {"verein", kClub},
    {"ort", kClub},
    {"ville", kClub},
    {"klubb", kClub},
    {"klubba", kClub},
    {"förening", kClub},
    {"klub", kClub},
    {"lag", kClub},
    {"seura", kClub},
    {"oddíl", kClub},
    {"所属", kClub},
    {"class", kClass},
    {"cl", ColumnTitle::kClubOrClass},
    {"cat", kClass},
    {"category", kClass},
    {"klasse", kClass},
    {"kl", kClass},
    {"kat", kClass},
    {"kategorie", kClass},
    {"catég", kClass},
    {"catégorie", kClass},
    {"klass", kClass},
    {"klas", kClass},
    {"sarja", kClass},
    {"luokka", kClass},
    {"クラス", kClass},
    {"time", kTime},
    {"result", kTime},
    {"finishtime", kTime},
    {"totaltime", kTime},
    {"runtime", kTime},
    {"racetime", kTime},
    {"total", kTime},
    {"zeit", kTime},
    {"laufzeit", kTime},
    {"ergebnis", kTime},
    {"temps", kTime},
    {"tid", kTime},
    {"sluttid", kTime},
    {"resultat", kTime},
    {"aika", kTime},
    {"tulos", kTime},
    {"čas", kTime},
    {"タイム", kTime},
    {"記録", kTime},
    {"card", kCard},
    {"sicard", kCard},
    {"ecard", kCard},
    {"chip", kCard},
    {"chipno", kCard},
    {"chipnr", kCard},
    {"bricka", kCard},
    {"brikke", kCard},
    {"brik", kCard},
    {"kortti", kCard},
    {"puce", kCard},
    {"čip", kCard},
    {"nat", ColumnTitle::kNationality},
    {"nation", ColumnTitle::kNationality},
    {"country", ColumnTitle::kNationality},
    {"land", ColumnTitle::kNationality},
    {"sex", ColumnTitle::kSex},
    {"gender", ColumnTitle::kSex},
    {"age", ColumnTitle::kAge},
    {"start", ColumnTitle::kStart},
    {"starttime", ColumnTitle::kStart},
    {"startzeit", ColumnTitle::kStart},
    {"starttid", ColumnTitle::kStart},
    {"behind", kBehind},
    {"diff", kBehind},
    {"difference", kBehind},
    {"rückst", kBehind},
    {"rückstand", kBehind},
    {"écart", kBehind},
    {"efter", kBehind},
    {"etter", kBehind},
    {"bag", kBehind},
    {"ero", kBehind},
    {"ztráta", kBehind},
    {"ageclass", kUnused},
    {"yb", kUnused},
    {"jg", kUnused},
    {"points", kUnused},
    {"score", kUnused},
};

constexpr std::string_view kMissingCharacters = "-:.*";
constexpr std::size_t kLongestPlace = 4;

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// "-----", "--:--", a dash.
bool IsMissing(std::string_view word) {
  if (word == "\u2013" || word == "\u2014") return true;
  return word.find('-') != std::string_view::npos &&
         word.find_first_not_of(kMissingCharacters) == std::string_view::npos;
}

bool IsTwoDigits(std::string_view text) { return text.size() == 2 && IsDigits(text); }

// "4.32", "1.04.32", and with point times also "1:04.32", have a colon in place of each point.
bool HasPointsForColons(std::string_view word, bool point_times) {
  const std::size_t point = word.rfind('.');
  if (point == 0 || point == std::string_view::npos) return false;
  return IsTwoDigits(word.substr(point + 1)) && (point_times || !Contains(word, ":"));
}

std::optional<Milliseconds> TimeOf(std::string_view word, bool point_times) {
  if (word.empty() || !IsDigit(word.front())) return std::nullopt;
  if (!HasPointsForColons(word, point_times)) {
    return Contains(word, ":") ? ForeignTime(word) : std::nullopt;
  }
  std::string text(word);
  std::replace(text.begin(), text.end(), '.', ':');
  return ForeignTime(text);
}

bool IsBlank(char c) { return c == ' ' || c == '\n'; }

// Calls a function with each word of a text.
template <typename Function>
void ForEachWord(std::string_view text, Function function) {
  for (std::size_t pos = 0; pos < text.size();) {
    const std::size_t begin = pos;
    while (pos < text.size() && !IsBlank(text[pos])) ++pos;
    if (pos > begin) function(text.substr(begin, pos - begin));
    ++pos;
  }
}

// --- labels of controls ---

constexpr std::size_t kLongestNumber = 3;
constexpr std::size_t kLongestCode = 8;

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  ForEachWord(text, [&](std::string_view word) { out += word; });
  return out;
}

std::size_t CountDigits(std::string_view text) {
  std::size_t count = 0;
  while (count < text.size() && IsDigit(text[count])) ++count;
  return count;
}

// A code of letters and digits; empty for another text.
std::string_view CodeIn(std::string_view text) {
  const bool is_code = !text.empty() && text.size() <= kLongestCode &&
                       std::all_of(text.begin(), text.end(),
                                   [](char c) { return IsDigit(c) || IsLetter(c) || c == '-'; });
  return is_code ? text : std::string_view();
}

// The code in brackets that the text ends with. Removes both.
std::string_view TakeBracketedCode(std::string_view& text) {
  if (text.empty()) return {};
  const char close = text.back();
  if (close != ')' && close != ']') return {};
  const std::size_t open = text.rfind(close == ')' ? '(' : '[');
  if (open == std::string_view::npos) return {};
  const std::string_view code = CodeIn(text.substr(open + 1, text.size() - open - 2));
  if (!code.empty()) text = text.substr(0, open);
  return code;
}

bool IsFinishName(std::string_view text) {
  constexpr std::string_view kNames[] = {
      "f",   "f1",  "finish",  "fin",  "z", "ziel",    "zi", "mål",          "maali",
      "cíl", "cil", "arrivée", "goal", "m", "arrivee", "ma", "フィニッシュ", "ゴール"};
  const std::string folded = FoldCase(text);
  return std::find(std::begin(kNames), std::end(kNames), folded) != std::end(kNames);
}

// --- classes ---

struct Quantity {
  std::size_t begin = 0, end = 0;  // in the text
  std::int32_t meters = 0;         // 0 for a number of something else
  bool is_kilometers = false;
};

bool IsDigitAt(std::string_view text, std::size_t pos) {
  return pos < text.size() && IsDigit(text[pos]);
}

std::size_t EndOfNumber(std::string_view text, std::size_t pos) {
  while (IsDigitAt(text, pos) || (pos < text.size() && (text[pos] == '.' || text[pos] == ',') &&
                                  IsDigitAt(text, pos + 1))) {
    ++pos;
  }
  return pos;
}

// The next number with a unit from `pos` on: a length, a climb, or a number of controls.
std::optional<Quantity> FindQuantity(std::string_view text, std::size_t pos) {
  while (pos < text.size()) {
    if (!IsDigit(text[pos])) {
      ++pos;
      continue;
    }
    const std::size_t begin = pos;
    pos = EndOfNumber(text, pos);
    if (begin > 0 && IsLetter(text[begin - 1])) continue;
    const std::size_t unit = std::min(text.find_first_not_of(' ', pos), text.size());
    std::size_t end = unit;
    while (end < text.size() && IsLetter(text[end])) ++end;
    const std::string name = LowerAscii(text.substr(unit, end - unit));
    const std::string_view number = text.substr(begin, pos - begin);
    if (name == "km" || name == "m" || name == "ft") {
      return Quantity{begin, end, Meters(number, name), name == "km"};
    }
    if (name == "hm") return Quantity{begin, end, Meters(number, "m"), false};
    if (name == "c" || name == "p" || name == "controls" || name == "posten") {
      return Quantity{begin, end};
    }
  }
  return std::nullopt;
}

// Removes "(16)", the number of runners, at the end of a name.
bool TakeRunnerCount(std::string_view& name) {
  if (!name.ends_with(')')) return false;
  const std::size_t open = name.rfind('(');
  if (open == std::string_view::npos || open == 0) return false;
  const std::string_view inside = name.substr(open + 1, name.size() - open - 2);
  const bool is_count = !inside.empty() && IsDigit(inside.front()) &&
                        inside.find_first_not_of("0123456789 /") == std::string_view::npos;
  if (is_count) name = name.substr(0, open);
  return is_count;
}

void TrimName(std::string_view& name) {
  constexpr std::string_view kEnds = " \n,;:-(|/";
  while (!name.empty() && kEnds.find(name.back()) != std::string_view::npos) name.remove_suffix(1);
  while (!name.empty() && (name.front() == ' ' || name.front() == '\n')) name.remove_prefix(1);
}

// Removes a word such as "Class:" before the name.
void TakeClassWord(std::string_view& name) {
  const std::size_t colon = name.find(':');
  if (colon == std::string_view::npos || colon + 1 == name.size()) return;
  const std::string word = PageWord(name.substr(0, colon));
  if (ColumnTitleOf(word) == kClass || word == "course" || word == "bana" || word == "bahn") {
    name.remove_prefix(colon + 1);
  }
}

// Removes the word before a quantity, such as "Length", with its colon.
void TakeLengthWord(std::string_view& name) {
  constexpr std::string_view kWords[] = {"length",   "länge",  "längd",        "lengde",
                                         "længde",   "pituus", "délka",        "dist",
                                         "distance", "up",     "courselength", "距離"};
  const std::size_t blank = name.find_last_of(" \n");
  if (blank == std::string_view::npos) return;
  const std::string word = PageWord(name.substr(blank + 1));
  if (std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords)) {
    name = name.substr(0, blank);
  }
}

// --- dates ---

struct MonthName {
  std::string_view begin;  // in lower case
  int month;
};

constexpr MonthName kMonthNames[] = {
    {"jan", 1},   {"led", 1},     {"tammi", 1}, {"feb", 2},      {"fév", 2},      {"únor", 2},
    {"helmi", 2}, {"mar", 3},     {"mär", 3},   {"břez", 3},     {"maalis", 3},   {"apr", 4},
    {"avr", 4},   {"dub", 4},     {"huhti", 4}, {"may", 5},      {"mai", 5},      {"maj", 5},
    {"květ", 5},  {"touko", 5},   {"jun", 6},   {"juin", 6},     {"červn", 6},    {"červen", 6},
    {"kesä", 6},  {"juillet", 7}, {"jul", 7},   {"červenec", 7}, {"července", 7}, {"heinä", 7},
    {"aug", 8},   {"août", 8},    {"srp", 8},   {"elo", 8},      {"sep", 9},      {"zář", 9},
    {"syys", 9},  {"oct", 10},    {"okt", 10},  {"říj", 10},     {"loka", 10},    {"nov", 11},
    {"list", 11}, {"marras", 11}, {"dec", 12},  {"dez", 12},     {"des", 12},     {"déc", 12},
    {"pros", 12}, {"joulu", 12}};

// The longest name that the word begins with decides. 0 for none.
int MonthOf(std::string_view word) {
  const std::string folded = FoldCase(word);
  std::size_t longest = 0;
  int month = 0;
  for (const MonthName& name : kMonthNames) {
    if (!folded.starts_with(name.begin) || name.begin.size() <= longest) continue;
    longest = name.begin.size();
    month = name.month;
  }
  return month;
}

// A number or a name of a month in a text.
struct DatePart {
  int value = 0;
  std::size_t digits = 0;  // 0 for a name
  std::size_t begin = 0, end = 0;
};

bool IsWordByte(char c) { return IsLetter(c) || static_cast<unsigned char>(c) >= 0x80; }

std::vector<DatePart> DateParts(std::string_view text) {
  constexpr std::size_t kMostParts = 64;
  constexpr std::size_t kLongestYear = 4;
  std::vector<DatePart> parts;
  for (std::size_t pos = 0; pos < text.size() && parts.size() < kMostParts;) {
    const std::size_t begin = pos;
    if (IsDigit(text[pos])) {
      pos += CountDigits(text.substr(pos));
      const std::size_t digits = pos - begin;
      if (digits > kLongestYear) continue;
      parts.push_back({NumericLong(text.substr(begin, digits)), digits, begin, pos});
    } else if (IsWordByte(text[pos])) {
      while (pos < text.size() && IsWordByte(text[pos])) ++pos;
      const int month = MonthOf(text.substr(begin, pos - begin));
      if (month > 0) parts.push_back({month, 0, begin, pos});
    } else {
      ++pos;
    }
  }
  return parts;
}

// Whether only marks of a date are between two parts.
bool AreTogether(std::string_view text, const DatePart& a, const DatePart& b) {
  constexpr std::size_t kMost = 3;  // a character of Japanese is as long
  const std::string_view between = text.substr(a.end, b.begin - a.end);
  if (between == "\u5E74" || between == "\u6708") return true;  // "2022年6月4日"
  return between.size() <= kMost && between.find_first_not_of("-/., ") == std::string_view::npos;
}

std::optional<DateTime> DateOf(const DatePart& a, const DatePart& b, const DatePart& c) {
  constexpr std::size_t kYear = 4;
  const auto is_small = [](const DatePart& part) { return part.digits == 1 || part.digits == 2; };
  if (a.digits == kYear && b.digits != kYear && is_small(c)) {
    return DateNumber(a.value, b.value, c.value);
  }
  if (c.digits != kYear) return std::nullopt;
  if (a.digits == 0 && is_small(b)) return DateNumber(c.value, a.value, b.value);
  if (!is_small(a) || b.digits == kYear) return std::nullopt;
  if (const auto date = DateNumber(c.value, b.value, a.value)) return date;
  return b.digits == 0 ? std::nullopt : DateNumber(c.value, a.value, b.value);
}

}  // namespace

std::string PageWord(std::string_view text) {
  std::string out;
  for (const char c : text) {
    constexpr std::string_view kDropped = " \n.-/:#";
    if (kDropped.find(c) == std::string_view::npos) out += c;
  }
  return FoldCase(out);
}

CellTimes TimesIn(std::string_view cell, bool point_times) {
  CellTimes found;
  ForEachWord(cell, [&](std::string_view word) {
    if (found.count == found.times.size()) return;
    word = word.substr(0, word.find_first_of("(["));
    while (!word.empty() && word.back() == '*' && !IsMissing(word)) word.remove_suffix(1);
    const PageTime time = TimeOf(word, point_times);
    if (time || IsMissing(word)) found.times[found.count++] = time;
  });
  return found;
}

bool HasPointTime(std::string_view cell) {
  bool found = false;
  ForEachWord(cell, [&](std::string_view word) {
    const std::size_t digits = CountDigits(word);
    found |= digits > 0 && word.substr(digits, 1) == "." &&
             IsTwoDigits(word.substr(digits + 1, 2)) &&
             (word.size() == digits + 3 || word[digits + 3] == '(');
  });
  return found;
}

bool IsPlaceCell(std::string_view cell) {
  if (cell.size() > 2 && (cell.front() == '(' || cell.front() == '[')) {
    cell = cell.substr(1, cell.size() - 2);
  }
  return !cell.empty() && cell.size() <= kLongestPlace && IsDigits(cell);
}

std::optional<RunnerStatus> StatusOfPageWord(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  if (text.empty() || text.size() > kLongest) return std::nullopt;
  const std::string word = PageWord(text);
  for (const StatusWord& known : kStatusWords) {
    if (known.word == word) return known.status;
  }
  return std::nullopt;
}

std::optional<ControlLabel> ReadControlLabel(std::string_view text) {
  constexpr std::size_t kLongest = 30;
  if (text.empty() || text.size() > kLongest) return std::nullopt;
  const std::string joined = WithoutBlanks(text);
  std::string_view rest = joined;
  ControlLabel label;
  label.code = TakeBracketedCode(rest);
  if (IsFinishName(rest)) {
    label.is_finish = true;
    return label;
  }
  const bool from_start = rest.starts_with("S-") || rest.starts_with("s-");
  const std::size_t digits = CountDigits(rest);
  if (!from_start && (digits == 0 || digits > kLongestNumber)) return std::nullopt;
  if (!from_start) label.number = NumericLong(rest.substr(0, digits));
  rest.remove_prefix(from_start ? 1 : digits);
  if (rest.empty()) return label.code.empty() ? std::nullopt : std::optional(label);
  if (rest.front() != '-' && rest.front() != '/') return std::nullopt;
  rest.remove_prefix(1);
  if (IsFinishName(rest)) {
    label.is_finish = true;
    label.number = 0;
    return label;
  }
  const bool is_number = !rest.empty() && rest.size() <= kLongestNumber && IsDigits(rest);
  if (from_start || !label.code.empty()) {
    if (!is_number) return std::nullopt;
    label.number = NumericLong(rest);
    label.is_leg = true;
    return label;
  }
  label.code = CodeIn(rest);
  return label.code.empty() ? std::nullopt : std::optional(label);
}

ColumnTitle ColumnTitleOf(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  if (text.empty() || text.size() > kLongest) return ColumnTitle::kNone;
  // "Name / Club": the other part is below the first one.
  const std::size_t end = text.find_first_of("\n/", 1);
  const std::string word = PageWord(text.substr(0, end));
  for (const TitleWord& known : kTitleWords) {
    if (known.word == word) return known.title;
  }
  return ColumnTitle::kNone;
}

ClassLine ReadClassLine(std::string_view text) {
  ClassLine read;
  std::size_t name_end = text.size();
  std::size_t pos = 0;
  while (const auto found = FindQuantity(text, pos)) {
    pos = found->end;
    if (found->meters == 0) continue;
    name_end = std::min(name_end, found->begin);
    read.has_numbers = true;
    if (read.length == 0 && (found->is_kilometers || read.climb == 0)) {
      read.length = found->meters;
    } else if (read.climb == 0) {
      read.climb = found->meters;
    }
  }
  std::string_view name = text.substr(0, name_end);
  TrimName(name);
  TakeLengthWord(name);
  TrimName(name);
  if (TakeRunnerCount(name)) read.has_numbers = true;
  TrimName(name);
  TakeClassWord(name);
  TrimName(name);
  read.name = name;
  return read;
}

std::optional<DateTime> DateIn(std::string_view text) {
  const std::vector<DatePart> parts = DateParts(text);
  for (std::size_t i = 0; i + 2 < parts.size(); ++i) {
    if (!AreTogether(text, parts[i], parts[i + 1])) continue;
    if (!AreTogether(text, parts[i + 1], parts[i + 2])) continue;
    if (const auto date = DateOf(parts[i], parts[i + 1], parts[i + 2])) return date;
  }
  return std::nullopt;
}

}  // namespace keltrun
