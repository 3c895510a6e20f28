// The pages of docs/reference against the class tables of the built library, and all BASIC in the
// documentation.
#include "tests/endtoend/documentation/basic_checker.h"
#include "tests/endtoend/documentation/markdown.h"
#include "tests/endtoend/loaded_host.h"

#include <gmock/gmock.h>

namespace {

using namespace endtoend;
using testing::ElementsAre;
using testing::IsEmpty;

std::string pageOf(const host::ClassInfo& info) { return "docs/reference/" + info.name + ".md"; }

std::string declarationOf(const host::PropertyInfo& property)
{
    return property.name + " as " + property.typeText +
           (property.isReadOnly() ? " (read)" : " (read, write)");
}

std::string declarationOf(const host::MethodInfo& method)
{
    return method.text + (method.setter ? " (read, write)" : "");
}

/// All members of a class in the order of the class tables, as `kvx classes` prints them.
std::vector<std::string> declarationsOf(const host::ClassInfo& info)
{
    std::vector<std::string> all;
    for (const auto* list : {&info.properties, &info.sharedProperties})
        for (const host::PropertyInfo& each : *list) all.push_back(declarationOf(each));
    for (const auto* list : {&info.methods, &info.sharedMethods})
        for (const host::MethodInfo& each : *list) all.push_back(declarationOf(each));
    for (const host::EventInfo& each : info.events) all.push_back(each.text);
    for (const host::ConstantInfo& each : info.constants) all.push_back(each.text);
    return all;
}

std::string nameIn(const std::string& declaration)
{
    return declaration.substr(0, declaration.find_first_of(" ("));
}

/// The key with which BasicChecker::used() names a member.
std::string keyOf(const host::ClassInfo& info, const std::string& declaration)
{
    const bool isProperty = info.property(nameIn(declaration)) != nullptr;
    const std::size_t access = declaration.find(" (read");
    return info.name + "." + (isProperty ? nameIn(declaration) : declaration.substr(0, access));
}

struct Reference : LoadedHostTest {
    std::vector<const host::ClassInfo*> classes = loaded.host.pluginClasses();
};

TEST_F(Reference, ListsTheMembersOfEachClassInTheOrderOfItsTable)
{
    ASSERT_EQ(classes.size(), 5u);
    for (const host::ClassInfo* info : classes) {
        SCOPED_TRACE(pageOf(*info));
        std::vector<std::string> listed;
        for (const MemberEntry& entry : memberEntries(readDocument(pageOf(*info))))
            listed.insert(listed.end(), entry.declarations.begin(), entry.declarations.end());
        EXPECT_EQ(listed, declarationsOf(*info));
    }
}

TEST_F(Reference, DescribesEachMemberUnderItsName)
{
    for (const host::ClassInfo* info : classes)
        for (const MemberEntry& entry : memberEntries(readDocument(pageOf(*info)))) {
            SCOPED_TRACE(pageOf(*info) + ": " + entry.heading);
            ASSERT_FALSE(entry.declarations.empty()) << "no declaration";
            EXPECT_GT(entry.prose.size(), 20u) << entry.declarations.front() << " has no description";
            for (const std::string& declaration : entry.declarations)
                EXPECT_TRUE(entry.heading.empty() || entry.heading == nameIn(declaration)) << declaration;
        }
}

TEST_F(Reference, StatesErrorsAndExceptionsInEachSection)
{
    for (const host::ClassInfo* info : classes)
        for (const MemberEntry& entry : memberEntries(readDocument(pageOf(*info)))) {
            if (entry.heading.empty()) continue;
            const bool hasErrors = info->name == "AUPlayerKVX" || info->name == "CoreAudioKVX";
            const bool hasExceptions = hasErrors || info->name == "CoreAudioPlayerKVX";
            EXPECT_TRUE(!hasErrors || entry.prose.find("- `Lasterror`: ") != std::string::npos)
                << entry.heading;
            EXPECT_TRUE(!hasExceptions || entry.prose.find("- Exceptions") != std::string::npos)
                << entry.heading << "; the other pages state at the top that there are none";
        }
}

TEST_F(Reference, ShowsEachMemberInBasicThatTheTablesAccept)
{
    for (const host::ClassInfo* info : classes) {
        const std::string page = readDocument(pageOf(*info));
        BasicChecker checker;
        for (const CodeBlock& block : codeBlocks(page.substr(0, page.find("\n### "))))
            if (block.language == "basic")
                EXPECT_THAT(checker.check(block.text), IsEmpty()) << pageOf(*info) << ", before the members";
        for (const MemberEntry& entry : memberEntries(page)) {
            SCOPED_TRACE(pageOf(*info) + ": " + entry.heading);
            checker.clearUsed();
            EXPECT_THAT(checker.check(entry.basic), IsEmpty());
            for (const std::string& declaration : entry.declarations)
                EXPECT_EQ(checker.used().count(keyOf(*info, declaration)), 1u)
                    << "the example does not use " << declaration;
        }
    }
}

TEST_F(Reference, StatesTheTextOfEachSelectorConstant)
{
    const host::Object core = loaded.host.create("CoreAudioKVX");
    int count = 0;
    for (const MemberEntry& entry : memberEntries(readDocument("docs/reference/CoreAudioKVX.md"))) {
        const std::string name = nameIn(entry.declarations.at(0));
        if (core.classInfo().property(name) == nullptr || name[0] != 'k') continue;
        ++count;
        EXPECT_EQ(entry.prose.rfind("`" + core.get(name).print() + "`", 0), 0u) << name;
    }
    EXPECT_EQ(count, 81);
}

struct Documentation : LoadedHostTest {};

TEST_F(Documentation, ContainsOnlyBasicThatTheTablesAccept)
{
    int count = 0;
    for (const std::string& document : userDocuments()) {
        BasicChecker checker;
        for (const CodeBlock& block : codeBlocks(readDocument(document))) {
            if (block.language != "basic") continue;
            ++count;
            EXPECT_THAT(checker.check(block.text), IsEmpty()) << document;
        }
    }
    EXPECT_GT(count, 100);
}

struct BasicCheck : LoadedHostTest {
    BasicChecker checker;

    BasicCheck()
    {
        EXPECT_THAT(checker.check("Dim player As New AUPlayerKVX\n"
                                  "Dim buffered As New CoreAudioPlayerKVX\n"
                                  "Dim core As New CoreAudioKVX\n"
                                  "Dim file As FolderItem\n"
                                  "Dim bands(30) As Double\n"
                                  "Dim size As Integer\n"
                                  "Dim ok As Boolean\n"),
                    IsEmpty());
    }
};

TEST_F(BasicCheck, AcceptsCorrectLines)
{
    for (const char* line : {
             "player.Play",
             "player.Play()",
             "player.TimeRate = 0.75",
             "player.InputVolume(0) = 0.5",
             "bands(3) = -6",
             "player.updateEQ(bands)",
             "If player.LoadFile(file) And Not player.Playing Then player.Play",
             "Call player.LoadFile(file, 2, 2)",
             "player.TimePitchUnit = AUPlayerKVX.TimePitchUnitVarispeed",
             "MsgBox(\"at \" + Str(player.CurrentTime / 60) + \" min\") ' a comment",
             "core.AudioHardwareGetPropertyInfo(\"dOut\", size, ok)",
             "For i As Integer = 0 To Ubound(bands)",
             "If player.File <> Nil Then",
         })
        EXPECT_THAT(checker.check(line), IsEmpty());
}

TEST_F(BasicCheck, RefusesFaultyLines)
{
    const struct {
        const char* line;
        const char* message;
    } facts[] = {
        // line                                              message
        {"player.Speed = 2", "there is no member or function Speed"},
        {"player.TrackLength = 2", "the left side of = cannot be assigned"},
        {"player.Playing = 1", "Boolean cannot hold Integer"},
        {"Dim text As String = Nil", "String cannot hold Nil"},
        {"player.Play = True", "the left side of = cannot be assigned"},
        {"player.Pan", "a statement needs a method without a result, an assignment, or Call"},
        {"player.LoadFile(file)", "a statement needs a method without a result, an assignment, or Call"},
        {"Call player.Play", "Call needs a method with a result"},
        {"player.setChannelMap(bands)",
         "setChannelMap does not take (Double()); declared is setChannelMap(values() As Integer)"},
        {"player.Pause(1)", "Pause does not take (Integer); declared is Pause"},
        {"ok = player.LoadFile()",
         "LoadFile does not take (); declared is LoadFile(file As FolderItem, InputChannels As Integer = 2, "
         "OutputChannels As Integer = 2) As Boolean"},
        {"ok = buffered.AddAudio(Nil, 0, 0, \"16\")",
         "AddAudio does not take (Nil, Integer, Integer, String); declared is AddAudio(Data As MemoryBlock, "
         "offsetBytes As Integer = 0, countBytes As Integer = 0, BitSize As Integer = 16, "
         "ClearBuffers As Boolean = false) As Boolean"},
        {"core.AudioHardwareGetPropertyInfo(\"dOut\", 4, ok)",
         "AudioHardwareGetPropertyInfo does not take (String, Integer, Boolean); declared is "
         "AudioHardwareGetPropertyInfo(propertyID As String, ByRef size As Integer, "
         "ByRef writeable As Boolean)"},
        {"ok = player.Pan(0)", "Pan does not take (Integer); declared is Pan As Double"},
        {"ok = player.Pan", "Boolean cannot hold Double"},
        {"unknown.Play", "there is no member or function unknown"},
        {"If player.Pan Then", "a condition needs a Boolean"},
        {"player.Play player", "unexpected \"player\""},
        {"Dim other As New CoreAudioListenerKVX(1)",
         "Constructor does not take (Integer); declared is Constructor(ObjectID As UInt32, "
         "PropertySelector As UInt32, PropertyScope As UInt32, PropertyElement As UInt32)"},
        {"player.TimePitchUnit = AUPlayerKVX.Varispeed", "there is no member or function Varispeed"},
    };
    for (const auto& fact : facts)
        EXPECT_THAT(checker.check(fact.line), ElementsAre(std::string(fact.line) + ": " + fact.message));
}

TEST_F(BasicCheck, ChecksTheHandlersOfEvents)
{
    const std::string head = "Class Watch\nInherits CoreAudioListenerKVX\n";
    EXPECT_THAT(checker.check(head + "Sub Changed()\nEnd Sub\nEnd Class"), IsEmpty());
    EXPECT_EQ(checker.used(), (std::set<std::string>{"CoreAudioListenerKVX.Changed"}));
    EXPECT_THAT(checker.check(head + "Sub Moved()\nEnd Sub\nEnd Class"),
                ElementsAre("Sub Moved(): CoreAudioListenerKVX has no event Moved"));
}

TEST(MemberEntries, AreSectionsAndTableRows)
{
    const std::vector<MemberEntry> entries = memberEntries("# Page\n\n## Properties\n\n### Pan\n\n"
                                                           "```text\nPan as Double\n```\n\nIt pans.\n\n"
                                                           "```basic\nplayer.Pan = 0\n```\n\n"
                                                           "## Constants\n\nAll of them.\n\n"
                                                           "| declaration | use | BASIC |\n|---|---|---|\n"
                                                           "| `One = 1` | first | `x = One` |\n");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].heading, "Pan");
    EXPECT_EQ(entries[0].declarations, std::vector<std::string>{"Pan as Double"});
    EXPECT_EQ(entries[0].prose, "It pans.");
    EXPECT_EQ(entries[0].basic, "player.Pan = 0\n");
    EXPECT_EQ(entries[1].declarations, std::vector<std::string>{"One = 1"});
    EXPECT_EQ(entries[1].prose, "first");
    EXPECT_EQ(entries[1].basic, "x = One");
}

} // namespace
