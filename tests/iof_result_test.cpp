// The IOF XML result list: a small event byte by byte, the rules for times, ranks, statuses and
// names, and the two events compared with known facts.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "keltrun2/io/iof_result_writer.h"
#include "keltrun2/model/process_state.h"
#include "tests/test_support.h"

namespace keltrun::test {
namespace {

using std::string;

// The result list of the current event, saved at 2025-10-20 06:00:00.
string Written() { return WriteIofXmlResult(*CurrentModel(), 45950.25); }

string WithoutLineBreaks(string text) {
  std::erase(text, '\n');
  return text;
}

TEST(IofResult, IsWrittenToTheLetter) {
  const auto root = NewRoot();
  root->EventData()->EventName = "Spring <1>";
  root->EventData()->OfficialSite = "http://o.example/?a=1&b=2";
  const auto course = root->AddCourse(3);
  course->SetControlCount(2);
  course->SetControlNum(1, 31);
  course->SetControlNum(2, 32);
  const auto klass = root->AddClass("M21");
  klass->CourseNum = 3;
  klass->Length = 4500;
  AddRunner(*klass, "Berta", "dnf", {400, -1, 390});
  const auto winner = AddRunner(*klass, "山田　太郎", "12:40", {420, 230, 110});
  winner->ID = 7;
  winner->Ecard = 123456;
  winner->ClubName = "A\x01&B";
  winner->Sex = "男";
  winner->Rank = "1";
  winner->StartTime()->SetValue(Seconds(35999));  // 9:59:59
  AddRunner(*root->AddClass("OPEN"), "Nobody", "", {60});
  EXPECT_EQ(Written(), "<?xml version=\"1.0\"?>\r\n" + WithoutLineBreaks(R"(
<ResultList status="complete"><IOFVersion version="2.0.3"/><Event><EventId/>
<Name>Spring &lt;1&gt;</Name><EventClassificationId/>
<StartDate><Date dateFormat="YYYY-MM-DD"/></StartDate>
<WebURL>http://o.example/?a=1&amp;b=2</WebURL></Event>
<ClassResult><ClassShortName>M21</ClassShortName>
<PersonResult><Person sex="M"><PersonName><Family>山田</Family><Given>太郎</Given></PersonName>
<PersonId/></Person><Club><ClubId/><ShortName>A&amp;B</ShortName></Club>
<Result><StartNumber>7</StartNumber><CCardId>123456</CCardId>
<StartTime><Clock clockFormat="HH:MM:SS">09:59:59</Clock></StartTime>
<FinishTime><Clock clockFormat="HH:MM:SS">10:12:39</Clock></FinishTime>
<Time timeFormat="MM:SS">12:40</Time><ResultPosition>1</ResultPosition>
<CompetitorStatus value="OK"/><CourseVariation><CourseVariationId>3</CourseVariationId>
<CourseLength unit="m">4500</CourseLength><CourseClimb unit="m">0</CourseClimb>
<CourseControl><Sequence>1</Sequence><ControlCode>31</ControlCode></CourseControl>
<CourseControl><Sequence>2</Sequence><ControlCode>32</ControlCode></CourseControl>
</CourseVariation><SplitTime sequence="1"><ControlCode>31</ControlCode>
<Time timeFormat="MM:SS">7:00</Time></SplitTime><SplitTime sequence="2">
<ControlCode>32</ControlCode><Time timeFormat="MM:SS">10:50</Time></SplitTime>
<SplitTime sequence="3"><Time timeFormat="MM:SS">12:40</Time></SplitTime></Result></PersonResult>
<PersonResult><Person><PersonName><Family>Berta</Family><Given/></PersonName><PersonId/></Person>
<Club><ClubId/><ShortName/></Club><Result><Time timeFormat="MM:SS">13:10</Time>
<CompetitorStatus value="Disqualified"/><CourseVariationId>3</CourseVariationId>
<SplitTime sequence="1"><ControlCode>31</ControlCode><Time timeFormat="MM:SS">6:40</Time></SplitTime>
<SplitTime sequence="2"><Time timeFormat="MM:SS">13:10</Time></SplitTime></Result></PersonResult>
</ClassResult><ClassResult><ClassShortName>OPEN</ClassShortName></ClassResult>
<ModifyDate><Date dateFormat="YYYY-MM-DD">2025-10-20</Date>
<Clock clockFormat="HH:MM:SS">06:00:00</Clock></ModifyDate></ResultList>)") +
                           "\r\n");
}

// The texts at an XPath in document order, each followed by ";".
string Texts(const string& xml, const char* path) {
  pugi::xml_document document;
  EXPECT_TRUE(document.load_string(xml.c_str()));
  string texts;
  pugi::xpath_node_set nodes = document.select_nodes(path);
  nodes.sort();
  for (const pugi::xpath_node& found : nodes) {
    texts += found.attribute() ? found.attribute().value() : found.node().text().get();
    texts += ';';
  }
  return texts;
}

TEST(IofResult, TimesAndStatuses) {
  // Total time and official rank (if written), status, split times.
  for (const auto& [rank, result, laps, expected] :
       Rows<string, string, std::vector<double>, string>{
           {"1", "1:15:05", {}, "75:05;1;OK;"},
           {"", "1:02:03.4", {60}, "62:03;OK;1:00;"},
           {"", "0:59:59.7", {}, "60:00;OK;"},
           {"", "25:03:07", {}, "1503:07;OK;"},
           {"(3)", "0:50:00", {}, "50:00;NotCompeting;"},
           {"参", "0:50:00", {}, "50:00;NotCompeting;"},
           {"(3)", "DNF", {}, "0:00;NotCompeting;"},
           {"", "DNF", {60, 0, -1, 30}, "1:30;Disqualified;1:00;1:30;"},
           {"5", "MP", {60, -2, 30}, "1:30;5;Disqualified;1:00;1:30;"},
           {"", "dns", {}, "0:00;Inactive;"},
           {"", "MP", {10.5, 10.5, 10.5}, "0:32;Disqualified;0:11;0:21;0:32;"}}) {
    const auto root = NewRoot();
    AddRunner(*root->AddClass("A"), "Name", result, laps)->Rank = rank;
    EXPECT_EQ(Texts(Written(), "//Result/*[not(*)][not(@value)] | //@value | //Result/*/*"),
              expected);
  }
}

TEST(IofResult, NamesAndSexes) {
  for (const auto& [name, sex, expected] : Table<3>(R"(
           "Anna Berger" m M;Anna;Berger;      ＡＢ　Ｃ 男性 M;ＡＢ;Ｃ;  "van der Berg" F F;van;der;
           "A  B" 女 F;A;;                     Berg,Jan 女性 F;Berg;Jan;  山田 Ｍ 山田;;
           Ito f F;Ito;;                       "" male ;;)")) {
    const auto root = NewRoot();
    AddRunner(*root->AddClass("A"), name, "DNS", {})->Sex = sex;
    EXPECT_EQ(Texts(Written(), "//@sex | //Family | //Given"), expected) << name;
  }
}

// The first class of a course says to every class how long it is. A course of more controls than it
// can hold, one that does not exist and one of number 0, which is no course, are the others.
TEST(IofResult, CoursesAndDates) {
  const auto root = NewRoot();
  root->EventData()->EventDate()->SetValue(45948);
  root->MetaData()->LastUpdateDate = 45949 + Seconds(3661);
  root->AddCourse(2)->SetControlCount(60);
  root->AddCourse(0)->SetControlCount(1);
  for (const auto& [name, course, length] :
       Rows<string, int, int>{{"A", 2, 5000}, {"B", 2, 0}, {"C", 9, 1}, {"D", 0, 1}}) {
    const auto klass = root->AddClass(name);
    klass->CourseNum = course;
    klass->Length = length;
    AddRunner(*klass, "Name", "DNS", {});
  }
  EXPECT_EQ(Texts(Written(), "//CourseLength | //CourseControl[last()]/Sequence"),
            "5000;50;5000;50;");
  EXPECT_EQ(Texts(Written(), "//Date | //Clock | //WebURL"), "2025-10-18;2025-10-19;01:01:01;");
}

// The runners of a class in the facts, best first. With `sorted`, equal results are reversed.
std::vector<nlohmann::json> InResultOrder(const nlohmann::json& klass) {
  std::vector<nlohmann::json> rows;
  for (const std::size_t at : klass["sorted"]) {
    const auto& row = klass["runners"][at];
    const auto equals = std::find_if(rows.begin(), rows.end(),
                                     [&](const auto& other) { return other[6] == row[6]; });
    rows.insert(equals, row);
  }
  return rows;
}

// "75:05;"
string Minutes(int seconds) {
  const string text = std::to_string(seconds % 60);
  return std::to_string(seconds / 60) + (text.size() < 2 ? ":0" : ":") + text + ";";
}

TEST(IofResult, HoldsTheEvents) {
  for (const string event : {"hoshinomori", "midorigaoka"}) {
    const auto facts = nlohmann::json::parse(ReadBytes(DataFile(event + "/facts.json")))["lxm"];
    string expected;
    for (const auto& klass : facts["classes"]) {
      expected += klass["name"].get<string>() + ";";
      for (const auto& row : InResultOrder(klass)) {
        expected += row[4].get<string>() + ";";
        for (const int at : {1, 2}) expected += row[at] == 0 ? "" : row[at].dump() + ";";
        int split = 0;
        for (const int lap : row[10]) expected += lap > 0 ? Minutes(split += lap) : "";
      }
    }
    const auto root = NewRoot();
    ASSERT_TRUE(root->FileControl()->LoadLapFile(ExampleFile(event + "/event.lxm")));
    EXPECT_EQ(Texts(Written(),
                    "//ClassShortName | //ShortName | //StartNumber | //CCardId | "
                    "//SplitTime/Time"),
              expected);
  }
}

}  // namespace
}  // namespace keltrun::test
