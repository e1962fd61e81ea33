#include "keltrun2/io/foreign/sport_columns.h"

#include <algorithm>
#include <deque>
#include <span>
#include <utility>

#include "keltrun2/io/foreign/csv_rows.h"
#include "keltrun2/text/letters.h"
#include "keltrun2/text/numbers.h"

namespace keltrun {
namespace {

using enum SportField;

// Titles as FoldTitle makes them, separated by blanks: English, German, French, Swedish, Norwegian,
// Danish, Finnish, Czech, Spanish, Italian and Polish ones.
struct TitleRule {
  SportField field;
  std::string_view titles;
};

constexpr TitleRule kTitleRules[] = {
    {kStartNumber,
     "stno startno startnumber stnr startnr startnummer n°dép n°départ nodép dossard "
     "kilpailunumero numero nro stčí stčíslo startčíslo startovníčíslo dorsal pettorale nrstart "
     "numerstartowy"},
    {kBib, "xstno xstnr xstartnr xn°dép xdossard xčís xčíslo xdorsal xnro"},
    {kCard,
     "sicard chip chipno chipnr chipnumber cardno card ecard puce n°puce nopuce bricknr bricka "
     "brickanr brikkenr brikkenummer brikke brik briknr briknummer kortti korttinro emit čísločipu "
     "čip čipč sičip tarjeta tarjetasi pastilla pastillasi chipsi sichip numerchipa nrchipa"},
    {kCompetitorId,
     "databaseid dbid databasid databasnr databasenr databaseno datenbankid datenbanknr "
     "identbasededonnées idbasededonnées iddatabáze idbasededatos idbancadati idbazydanych "
     "tietokantaid"},
    {kSurname,
     "surname lastname familyname nachname familienname nom nomdefamille efternamn etternavn "
     "efternavn sukunimi příjmení apellido apellidos cognome nazwisko"},
    {kFirstName,
     "firstname givenname forename vorname prénom förnamn fornavn etunimi jméno jméno(křest) "
     "nombre nome imię"},
    {kName, "name competitor namn navn nimi nombre nome jméno"},
    {kBirthYear, "yb yearofbirth jg jahrgang né née år födelseår fødselsår svu rn an anno rok"},
    {kSex, "s sex gender g gsex geschlecht sexe k kön kjønn køn sp sukupuoli pohlaví sexo płeć"},
    {kNotCompeting, "nc ak aknotclass ut uk ufk ms ek fc pk"},
    {kStart, "start starttime startzeit départ starttid lähtö lähtöaika salida partenza"},
    {kFinish, "finish finishtime ziel zielzeit arrivée mål måltid maali cíl meta llegada arrivo"},
    {kTime, "time zeit laufzeit temps tid aika čas tiempo tempo czas"},
    {kClassifier,
     "classifier status wertung evaluation évaluation klassifikation tila klasifikace "
     "clasificación clasificado classificazione klasyfikacja"},
    {kCredit, "credit gutschrift crédit bonification avdrag fradrag hyvitys kredit"},
    {kPenalty, "penalty+ zuschlag+ pénalité+ tillägg+ tillegg+ tillæg+ penalizace+"},
    {kTeam,
     "team club mannschaft staffel verein équipe lag laget hold joukkue družstvo štafeta "
     "equipo squadra zespół"},
    {kClubShort, "clname clubname abk name nom namn navn nimi názevoddílu nombre nome nazwa"},
    {kClub,
     "city ort ville sted klub klubb klubbnamn by kaupunki paikkakunta seura město ciudad "
     "localidad città miasto"},
    {kNation, "nat nation nationality land nationalité maa stát nac país naz kraj"},
    {kClassShort,
     "short class category kurz kategorie court catégorie kort klass klasse lyhyt sarja krátký "
     "corto categoría breve categoria krótka"},
    {kClassLong, "long lang lång pitkä dlouhý largo lungo długa"},
    {kCourse, "course bahn circuit bana bane løype rata trať recorrido percorso trasa"},
    {kLength, "km kmkilometer length länge longueur längd lengde længde"},
    {kClimb, "m hm hmclimbmeter climb dénivelé stigning nousu převýšení desnivel dislivello"},
    {kControlCount,
     "coursecontrols controls bahnposten posten postesducircuit banankontroller "
     "banankontroller banaskontroller banakontroller banenskontroller posterpåbane poster "
     "løypensposter rastit ratarastit rastejaradalla kontrolytratě kontrolytrati controles "
     "controlesdelrecorrido puntidelpercorso punkty"},
    {kPlace,
     "pl plplace place platz plats plass plads sija pořadí umístění puesto "
     "posición pos miejsce posizione"},
    {kStartPunch,
     "startpunch startstempel poinçondedépart startstämpling startstempling lähtöleimaus "
     "startovníražení ražstart picadasalida punzonaturastart"},
    {kFinishPunch,
     "finishpunch zielstempel arrivée(p) poinçondarrivée poinçond'arrivée målstämpling "
     "målstempling maalileimaus cílovéražení ražcíl picadameta punzonaturaarrivo"},
    {kOverallTime,
     "overalltime total totaltime gesamtzeit gesamt tempstotal totaltid totaltime totalaika "
     "kokonaisaika celkovýčas tiempototal tempototale"},
    {kLeg,
     "leg strecke lauf relais parcours sträcka etappe tur osuus úsek posta tramo relevo "
     "frazione zmiana"},
    {kCombination,
     "combination bahnvariante variante banalternativ banvariant gafling gaffling hajonta "
     "kombinace combinación"},
};

// What the columns of a list are by their position.
struct Form {
  std::string_view tag;  // the beginning of the tag; empty: there is none
  std::size_t columns;   // before the controls
  std::size_t width;     // of the columns of a control
  std::span<const SportField> first;
  std::span<const SportField> last;  // the ones before the controls
};

constexpr SportField kFirst44[] = {kStartNumber, kCard,         kCompetitorId, kName,   kBirthYear,
                                   kOther,       kNotCompeting, kStart,        kFinish, kTime,
                                   kClassifier,  kOther,        kClubShort,    kClub,   kNation,
                                   kOther,       kClassShort,   kClassLong};
constexpr SportField kFirst46[] = {kStartNumber, kCard,   kCompetitorId, kSurname,      kFirstName,
                                   kBirthYear,   kSex,    kOther,        kNotCompeting, kStart,
                                   kFinish,      kTime,   kClassifier,   kOther,        kClubShort,
                                   kClub,        kNation, kOther,        kClassShort,   kClassLong};
constexpr SportField kFirst60[] = {
    kOther,      kStartNumber, kBib,     kCard,         kCompetitorId, kSurname,   kFirstName,
    kBirthYear,  kSex,         kOther,   kNotCompeting, kStart,        kFinish,    kTime,
    kClassifier, kCredit,      kPenalty, kOther,        kOther,        kClubShort, kClub,
    kNation,     kOther,       kOther,   kOther,        kClassShort,   kClassLong};
constexpr SportField kLast[] = {kCourse, kLength,     kClimb,      kControlCount,
                                kPlace,  kStartPunch, kFinishPunch};
constexpr SportField kLastWithoutPunches[] = {kCourse, kLength, kClimb, kControlCount};
constexpr SportField kLastOfSpeaker[] = {kCourse, kLength, kClimb, kControlCount, kPlace, kOther};
constexpr SportField kFirstRelay2003[] = {kStartNumber, kLeg,       kCompetitorId, kSurname,
                                          kFirstName,   kBirthYear, kSex,          kOther,
                                          kTeam,        kOther,     kClassShort};
constexpr SportField kLastRelay2003[] = {
    kCourse, kCombination, kLength, kClimb, kControlCount, kStart,      kFinish,
    kTime,   kClassifier,  kPlace,  kCard,  kStartPunch,   kFinishPunch};
constexpr SportField kFirstRelay2010[] = {
    kOther,        kStartNumber, kOther, kOther,  kLeg,        kOther,      kSurname, kFirstName,
    kBirthYear,    kSex,         kStart, kFinish, kTime,       kClassifier, kCard,    kOther,
    kCompetitorId, kOther,       kTeam,  kOther,  kClassShort, kCredit,     kPenalty};
constexpr SportField kLastRelay2010[] = {kCourse,      kLength,      kClimb, kControlCount,
                                         kCombination, kOverallTime, kPlace};
constexpr SportField kLastRelay2010WithoutTotal[] = {kCourse,       kLength,      kClimb,
                                                     kControlCount, kCombination, kPlace};

// Forms whose rows could be mistaken for each other begin with the fewest columns.
constexpr Form kForms[] = {
    {"", 44, 2, kFirst44, kLast},
    {"", 46, 2, kFirst46, kLast},
    {"OE", 57, 2, kFirst60, kLastWithoutPunches},
    {"OE", 60, 2, kFirst60, kLast},
    {"OE", 59, 4, kFirst60, kLastOfSpeaker},
    {"OS", 32, 4, kFirstRelay2010, kLastRelay2010},
    {"OS", 31, 4, kFirstRelay2010, kLastRelay2010WithoutTotal},
    {"", 25, 2, kFirstRelay2003, kLastRelay2003},
};

constexpr std::string_view kVersionMark = "_V";
constexpr std::string_view kVersionMark12 = "_V12";

constexpr std::size_t kFewestOfForm = 4;    // known titles that tell a form without controls
constexpr std::size_t kFewestColumns = 20;  // before the controls
constexpr std::size_t kMostColumns = 80;
constexpr std::size_t kSampleRows = 40;
constexpr std::size_t kMostRowsAbove = 5;  // a title, or "sep=;"
constexpr std::size_t kFewestCells = 4;    // of a head or a runner

// "N° dép." and "n° dép" are the same title, as are "Course no." and "Courseno".
std::string FoldTitle(std::string_view cell) {
  std::string folded;
  for (const char c : FoldCase(cell)) {
    if (std::string_view(" .-_/*").find(c) == std::string_view::npos) folded += c;
  }
  return folded;
}

using KnownTitle = std::pair<std::string_view, SportField>;

// All titles in the order of the alphabet; the meanings of one title are in the order of the rules.
const std::vector<KnownTitle>& KnownTitles() {
  static const std::vector<KnownTitle> kTitles = [] {
    std::vector<KnownTitle> titles;
    for (const TitleRule& rule : kTitleRules) {
      for (std::string_view rest = rule.titles; !rest.empty();) {
        const std::string_view title = rest.substr(0, rest.find(' '));
        titles.emplace_back(title, rule.field);
        rest.remove_prefix(std::min(title.size() + 1, rest.size()));
      }
    }
    std::sort(titles.begin(), titles.end());
    return titles;
  }();
  return kTitles;
}

// What a title can stand for.
std::span<const KnownTitle> MeaningsOf(std::string_view title) {
  const auto [begin, end] =
      std::equal_range(KnownTitles().begin(), KnownTitles().end(), KnownTitle(title, kOther),
                       [](const auto& a, const auto& b) { return a.first < b.first; });
  return {KnownTitles().data() + (begin - KnownTitles().begin()),
          static_cast<std::size_t>(end - begin)};
}

// "OE0016", "OS0014a", "OESco0001", "OE0014_V12": letters, four digits, perhaps a letter and the
// version of the program.
bool IsTag(std::string_view cell) {
  if (!cell.starts_with("OE") && !cell.starts_with("OS")) return false;
  const std::size_t digits = cell.find_first_of("0123456789");
  if (digits == std::string_view::npos || digits > 5 || cell.size() < digits + 4) return false;
  const std::string_view after = cell.substr(digits + 4);
  const std::string_view letters = after.substr(0, after.find(kVersionMark));
  return IsDigits(cell.substr(digits, 4)) && letters.size() <= 2 &&
         after.size() <= letters.size() + 5;
}

// The number at the end of a title, 0 if there is none.
std::int32_t NumberOf(std::string_view title) {
  const std::size_t digits = title.find_last_not_of("0123456789") + 1;
  return title.size() - digits <= 4 ? NumericLong(title.substr(digits)) : 0;
}

std::string_view WithoutNumber(std::string_view title) {
  return title.substr(0, title.find_last_not_of("0123456789") + 1);
}

// A head: its titles, without the empty ones at the end and the note that there may be more.
std::vector<std::string> ReadTitles(const std::vector<std::string_view>& cells) {
  std::vector<std::string> titles(cells.size());
  std::transform(cells.begin(), cells.end(), titles.begin(), FoldTitle);
  while (!titles.empty() && (titles.back().empty() || titles.back().starts_with('('))) {
    titles.pop_back();
  }
  return titles;
}

// Two or four titles in a row that end in 1 begin the controls: "Control1", "Punch1".
std::optional<ControlColumns> ControlTitles(const std::vector<std::string>& titles) {
  for (std::size_t begin = 1; begin < titles.size(); ++begin) {
    std::size_t end = begin;
    while (end < titles.size() && NumberOf(titles[end]) == 1) ++end;
    const std::size_t width = end - begin;
    const bool goes_on = end < titles.size() && !titles[end].empty();
    if ((width == 2 || width == 4) && (!goes_on || NumberOf(titles[end]) == 2)) {
      return ControlColumns{begin, width};
    }
    begin = std::max(begin, end);
  }
  return std::nullopt;
}

// How well the rows of a list have their controls in some place.
enum class Fit : std::int32_t { kNothing, kWrong, kRight };

bool IsCode(std::string_view cell) {
  return !cell.empty() && cell.size() <= 8 &&
         cell.find_first_of(":,. ") == std::string_view::npos &&
         cell.find_first_of("0123456789") != std::string_view::npos;
}

bool IsNoTime(std::string_view cell) {
  return cell.find_first_of("0123456789") == std::string_view::npos && cell.size() <= 8;
}

// One to three digits, and once or twice a point and two digits.
bool HasTimePoints(std::string_view cell) {
  constexpr std::size_t kLongest = 9;
  if (cell.size() < 4 || cell.size() > kLongest || cell[cell.size() - 3] != '.') return false;
  if (!IsDigits(cell.substr(cell.size() - 2))) return false;
  cell.remove_suffix(3);
  if (cell.size() > 3 && cell[cell.size() - 3] == '.') cell.remove_suffix(3);
  return cell.size() <= 3 && cell.find_first_not_of("0123456789") == std::string_view::npos;
}

using Row = std::vector<std::string_view>;

Fit FitOf(const Row& cells, ControlColumns controls) {
  std::size_t times = 0;
  const std::size_t code = controls.width == 4 ? 1 : 0;
  for (std::size_t at = controls.begin; at + code + 1 < cells.size(); at += controls.width) {
    const std::string_view time = cells[at + code + 1];
    if (cells[at + code].empty() && IsNoTime(time)) continue;
    if (!IsCode(cells[at + code])) return Fit::kWrong;
    if (controls.width == 4 && !IsDigits(cells[at])) return Fit::kWrong;
    const bool is_time = HasTimeSign(time);
    if (!is_time && !IsNoTime(time)) return Fit::kWrong;
    times += is_time && SportTime(time) ? 1 : 0;
  }
  return times > 0 ? Fit::kRight : Fit::kNothing;
}

// Whether a row can be one of a runner with split times.
bool HasTimes(const Row& cells) { return std::any_of(cells.begin(), cells.end(), HasTimeSign); }

// A few rows of a list.
class Sample {
 public:
  Sample(std::string_view text, char separator) {
    RemarkList remarks;
    CsvRows rows(text, separator, remarks);
    while (rows_.size() < kSampleRows && rows.Next()) {
      if (rows_.empty() && above_ < kMostRowsAbove && rows.Cells().size() < kFewestCells) {
        ++above_;
        continue;
      }
      Row& row = rows_.emplace_back();
      for (const std::string_view cell : rows.Cells()) {
        row.push_back(texts_.emplace_back(cell));
      }
    }
  }

  bool IsEmpty() const { return rows_.empty(); }
  // The rows before the first one that are too short to be part of the list.
  std::size_t Above() const { return above_; }
  const Row& First() const { return rows_[0]; }

  // How many more rows have their controls in this place than have something else there.
  std::ptrdiff_t Votes(ControlColumns controls, std::size_t first_row) const {
    std::ptrdiff_t votes = 0;
    for (std::size_t row = first_row; row < rows_.size(); ++row) {
      votes += Vote(FitOf(rows_[row], controls));
    }
    return votes;
  }

  // The place where most rows have controls of this width, or of any, first of all one of a known
  // form.
  std::optional<ControlColumns> Controls(std::optional<std::size_t> width,
                                         std::size_t first_row) const {
    for (const Form& form : kForms) {
      const ControlColumns controls{form.columns, form.width};
      if (form.width == width.value_or(form.width) && BeginsAt(controls, first_row)) {
        return controls;
      }
    }
    for (const std::size_t each : {std::size_t{2}, std::size_t{4}}) {
      if (each != width.value_or(each)) continue;
      for (std::size_t begin = kFewestColumns; begin <= kMostColumns; ++begin) {
        if (BeginsAt({begin, each}, first_row)) return ControlColumns{begin, each};
      }
    }
    return std::nullopt;
  }

 private:
  static std::ptrdiff_t Vote(Fit fit) {
    return fit == Fit::kRight ? 1 : fit == Fit::kWrong ? -1 : 0;
  }

  // Whether most rows have their first control here.
  bool BeginsAt(ControlColumns controls, std::size_t first_row) const {
    std::ptrdiff_t votes = 0;
    for (std::size_t row = first_row; row < rows_.size(); ++row) {
      const std::size_t code = controls.begin + (controls.width == 4 ? 1 : 0);
      if (rows_[row].size() <= code) continue;
      votes += rows_[row][code].empty() ? -1 : Vote(FitOf(rows_[row], controls));
    }
    return votes > 0;
  }

  std::deque<std::string> texts_;
  std::vector<Row> rows_;
  std::size_t above_ = 0;
};

// Reads the head of a list and the shape of its rows.
class ColumnFinder {
 public:
  ColumnFinder(const Sample& sample, char separator, std::int32_t race)
      : sample_(sample), titles_(ReadTitles(sample.First())), race_(race) {
    found_.separator = separator;
    found_.rows_above = sample.Above();
    found_.column.fill(-1);
  }

  void Find() {
    found_.has_head =
        !HasTimes(sample_.First()) || FitOf(sample_.First(), AnyControls(0)) != Fit::kRight;
    if (found_.has_head) ReadHead();
    FindControls();
    FillFromForm();
    found_.is_relay = found_.tag.starts_with("OS") || found_.Has(kLeg);
    MoveColumns();
  }

  // The number of known titles.
  std::size_t Known() const { return known_; }
  // Whether the list is one of these.
  bool IsRecognized() const {
    if (!found_.tag.empty() || found_.is_score) return true;
    const bool names = found_.Has(kSurname) || found_.Has(kName);
    if (names && fits_form_) return true;
    if (!found_.controls && HasLegTitles()) return false;
    const bool numbers = found_.Has(kStartNumber) || found_.Has(kCompetitorId);
    const bool typical = Title(kCard) + Title(kCompetitorId) + Title(kNotCompeting) +
                             Title(kClassifier) + Title(kStartPunch) + Title(kClubShort) >=
                         2;
    return names && known_ >= 8 && numbers && typical;
  }
  SportColumns Take() && { return std::move(found_); }

 private:
  // A result list with a column for each leg, "1", "2", ..., also has such titles for its runners.
  bool HasLegTitles() const {
    constexpr std::ptrdiff_t kFewest = 2;
    return std::count_if(titles_.begin(), titles_.end(), [](const std::string& title) {
             return !title.empty() && IsDigits(title);
           }) >= kFewest;
  }

  std::int32_t& Column(SportField field) { return found_.column[static_cast<std::size_t>(field)]; }
  int Title(SportField field) const { return found_.Has(field) ? 1 : 0; }

  void ReadHead() {
    ReadTag();
    ReadRaces();
    for (std::size_t i = 0; i < titles_.size(); ++i) ReadTitle(i);
  }

  void ReadTag() {
    if (IsTag(sample_.First()[0])) found_.tag = sample_.First()[0];
    const auto has = [this](std::string_view title) {
      return std::find(titles_.begin(), titles_.end(), title) != titles_.end();
    };
    found_.is_score =
        found_.tag.starts_with("OES") ||
        (titles_.size() > 1 && titles_[0] == "racenumber" && has("score") && !has("controlcode1"));
  }

  // A list of several races has the columns "Time1", "Time2", ... and no "Time". No event has more
  // than a few.
  void ReadRaces() {
    constexpr std::int32_t kMostRaces = 30;
    std::int32_t last = 0;
    for (const std::string& title : titles_) {
      if (FieldOf(title) == kTime) return;
      const std::int32_t race = NumberOf(title);
      if (race <= kMostRaces && FieldOf(WithoutNumber(title)) == kTime) last = std::max(last, race);
    }
    found_.races = std::max(last, 1);
    has_races_ = last > 0;
  }

  // The first field that a title can stand for.
  static SportField FieldOf(std::string_view title) {
    const auto meanings = MeaningsOf(title);
    return meanings.empty() ? kOther : meanings.front().second;
  }

  void ReadTitle(std::size_t i) {
    if (titles_[i].empty() || (i == 0 && !found_.tag.empty())) return;
    std::string_view title = titles_[i];
    if (has_races_ && NumberOf(title) == race_ && !FieldsOfRace(WithoutNumber(title))) return;
    if (has_races_ && NumberOf(title) == race_) title = WithoutNumber(title);
    for (const auto& [word, field] : MeaningsOf(title)) {
      if (IsTaken(field)) continue;
      Column(field) = static_cast<std::int32_t>(i);
      ++known_;
      return;
    }
  }

  // Whether each race has its own column.
  static bool FieldsOfRace(std::string_view title) {
    const SportField field = FieldOf(title);
    return field == kCard || field == kNotCompeting || field == kStart || field == kFinish ||
           field == kTime || field == kClassifier || field == kPlace;
  }

  bool IsTaken(SportField field) const {
    if (field == kName && found_.Has(kSurname)) return true;
    return found_.Has(field);
  }

  ControlColumns AnyControls(std::size_t first_row) const {
    return sample_.Controls(std::nullopt, first_row).value_or(ControlColumns{kMostColumns, 2});
  }

  // The titles tell where the controls begin, or else the end of the head. The rows decide when
  // they have no controls there.
  void FindControls() {
    if (has_races_) return;
    const std::size_t first_row = found_.has_head ? 1 : 0;
    if (found_.has_head) found_.controls = ControlTitles(titles_);
    if (!found_.controls && found_.Has(kFinishPunch)) {
      found_.controls = ControlColumns{static_cast<std::size_t>(found_.At(kFinishPunch)) + 1, 2};
    }
    if (found_.controls && sample_.Votes(*found_.controls, first_row) >= 0) return;
    std::optional<ControlColumns> in_rows;
    if (found_.controls) in_rows = sample_.Controls(found_.controls->width, first_row);
    if (!in_rows) in_rows = sample_.Controls(std::nullopt, first_row);
    if (!in_rows) return;
    if (found_.controls && in_rows->width == found_.controls->width) {
      found_.shift = static_cast<std::int32_t>(in_rows->begin) -
                     static_cast<std::int32_t>(found_.controls->begin);
    }
    found_.controls = in_rows;
  }

  // Where nearly all known titles stand as in a form, its positions count: a title can have another
  // meaning in some language, or be unknown.
  void FillFromForm() {
    for (Form form : kForms) {
      if (!MayHave(form)) continue;
      if (found_.controls ? !HasControlsOf(form) : has_races_) continue;
      if (!found_.controls) {  // what the head has of the first columns
        form.first = form.first.first(std::min(form.first.size(), titles_.size()));
        form.last = {};
      }
      const std::size_t agree = Agreeing(form);
      const std::size_t expected = known_ - std::min(known_, Unknown(form));
      if (agree * 5 < expected * 4 || (!found_.controls && agree < kFewestOfForm)) continue;
      fits_form_ = found_.controls && (known_ == 0 || agree >= 2);
      if (!found_.has_head) found_.tag = form.tag;
      Fill(form);
      return;
    }
  }

  // The tag stands in the head; without one, the place of the controls tells the form.
  bool MayHave(const Form& form) const {
    if (!found_.has_head) return true;
    return form.tag.empty() ? found_.tag.empty() : found_.tag.starts_with(form.tag);
  }

  bool HasControlsOf(const Form& form) const {
    const auto begin = static_cast<std::int32_t>(found_.controls->begin) - found_.shift;
    return found_.controls->width == form.width && begin == static_cast<std::int32_t>(form.columns);
  }

  // Which column a form has for a field.
  static std::int32_t ColumnOf(const Form& form, SportField field) {
    const auto find = [field](std::span<const SportField> fields, std::size_t begin) {
      const auto at = std::find(fields.begin(), fields.end(), field);
      return at == fields.end() ? -1
                                : static_cast<std::int32_t>(begin) +
                                      static_cast<std::int32_t>(at - fields.begin());
    };
    const std::int32_t first = find(form.first, 0);
    return first >= 0 ? first : find(form.last, form.columns - form.last.size());
  }

  std::size_t Agreeing(const Form& form) const {
    std::size_t count = 0;
    for (std::size_t i = 1; i < kSportFieldCount; ++i) {
      const std::int32_t column = ColumnOf(form, static_cast<SportField>(i));
      if (column >= 0 && found_.column[i] == column) ++count;
    }
    return count;
  }

  // The known titles of fields that a form does not have.
  std::size_t Unknown(const Form& form) const {
    std::size_t count = 0;
    for (std::size_t i = 1; i < kSportFieldCount; ++i) {
      if (found_.column[i] >= 0 && ColumnOf(form, static_cast<SportField>(i)) < 0) ++count;
    }
    return count;
  }

  void Fill(const Form& form) {
    for (std::size_t i = 1; i < kSportFieldCount; ++i) {
      const std::int32_t column = ColumnOf(form, static_cast<SportField>(i));
      if (column >= 0) found_.column[i] = column;
    }
    if (found_.Has(kSurname)) Column(kName) = -1;
  }

  // Rows with more columns than the head have them before those of the course.
  void MoveColumns() {
    if (found_.shift == 0) return;
    for (const SportField field : kLast) {
      if (found_.Has(field)) Column(field) += found_.shift;
    }
  }

  const Sample& sample_;
  std::vector<std::string> titles_;
  std::int32_t race_;
  bool has_races_ = false;
  std::size_t known_ = 0;
  bool fits_form_ = false;
  SportColumns found_;
};

// Whether one of the first lines has several of these characters.
bool MaySeparate(std::string_view text, char separator) {
  LineCursor lines(text);
  for (std::size_t i = 0; i <= kMostRowsAbove && !lines.AtEnd(); lines.Next()) {
    const std::string_view line = lines.Line();
    if (line.empty()) continue;
    if (std::count(line.begin(), line.end(), separator) >= 3) return true;
    ++i;
  }
  return false;
}

}  // namespace

std::optional<SportColumns> FindSportColumns(std::string_view text, std::int32_t race) {
  std::optional<SportColumns> best;
  std::size_t most = 0;
  for (const char separator : {';', ',', '\t', '\\'}) {
    if (!MaySeparate(text, separator)) continue;
    const Sample sample(text, separator);
    if (sample.IsEmpty()) continue;
    ColumnFinder finder(sample, separator, race);
    finder.Find();
    if (!finder.IsRecognized() || (best && finder.Known() <= most)) continue;
    most = finder.Known();
    best = std::move(finder).Take();
  }
  return best;
}

std::string SportFormatName(const SportColumns& columns) {
  const std::string program = columns.is_relay ? "OS" : "OE";
  if (columns.tag.empty() && columns.is_score) return "SPORTident CSV";
  if (columns.tag.empty()) return program + "2003 CSV";
  if (columns.tag == program) return program + "2010 CSV";
  const bool is_12 = columns.tag.ends_with(kVersionMark12);
  return program + (is_12 ? "12" : "2010") + " CSV (" + columns.tag + ")";
}

bool HasTimeSign(std::string_view cell) {
  return cell.find(':') != std::string_view::npos || HasTimePoints(cell);
}

std::string_view WithColons(std::string_view cell, std::string& buffer) {
  if (!HasTimePoints(cell)) return cell;
  buffer = cell;
  std::replace(buffer.begin(), buffer.end(), '.', ':');
  return buffer;
}

std::optional<Milliseconds> SportTime(std::string_view cell) {
  if (cell.empty()) return std::nullopt;
  std::string buffer;
  return ForeignTime(WithColons(cell, buffer));
}

std::optional<RunnerStatus> SportStatus(std::string_view text) {
  using enum RunnerStatus;
  constexpr RunnerStatus kClassifiers[] = {kOk,           kDidNotStart,  kDidNotFinish,
                                           kMissingPunch, kDisqualified, kOverTime};
  constexpr std::pair<std::string_view, RunnerStatus> kWords[] = {
      {"OK", kOk},           {"DNS", kDidNotStart},   {"DNF", kDidNotFinish},
      {"MP", kMissingPunch}, {"MISP", kMissingPunch}, {"MISPUNCHED", kMissingPunch},
      {"DQ", kDisqualified}, {"DSQ", kDisqualified},  {"DISQ", kDisqualified},
      {"OT", kOverTime},     {"OVT", kOverTime},      {"OVERTIME", kOverTime},
      {"NC", kNotCompeting}, {"AK", kNotCompeting}};
  if (text.size() == 1 && text[0] >= '0' && text[0] <= '5') return kClassifiers[text[0] - '0'];
  const std::string word = UpperAscii(text);
  for (const auto& [name, status] : kWords) {
    if (name == word) return status;
  }
  return std::nullopt;
}

bool IsMarked(std::string_view cell) { return !cell.empty() && cell != "0"; }

}  // namespace keltrun
