#include "tests/support/class_table.h"

#include "abi/accessor_sentinels.h"
#include "plugin/process_state.h"
#include "plugin/register_class.h"
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <stdexcept>
#include <string_view>

namespace support {

namespace {

/// Expect that `older` has `count` rows of `olderBytes` bytes, each equal to the beginning of the same row of
/// `currentBytes` bytes in `current`, then free `older`.
void expectOlderRows(void* older, const void* current, Word count, std::size_t olderBytes,
                     std::size_t currentBytes)
{
    ASSERT_EQ(older != nullptr, current != nullptr);
    if (!older) return;
    EXPECT_NE(older, current);
    for (Word i = 0; i < count; ++i)
        EXPECT_EQ(std::memcmp(static_cast<char*>(older) + i * olderBytes,
                              static_cast<const char*>(current) + i * currentBytes, olderBytes),
                  0)
            << "row " << i;
    std::free(older);
}

/// Register a copy of the class and return the copy. Expect the counts of the class in the copy.
REALclassDefinition registered(const REALclassDefinition& definition, int layout)
{
    REALclassDefinition copy = definition;
    CurrentREALControlVersion = layout;
    MyREALRegisterClass(&copy);
    CurrentREALControlVersion = newestLayout;
    EXPECT_EQ(fake::Host::current().registrations().size(), 1u);
    EXPECT_EQ(copy.version, static_cast<Word>(layout));
    EXPECT_EQ(copy.dataSize, (definition.dataSize + 15) / 16 * 16);
    EXPECT_EQ(copy.propertyCount, definition.propertyCount);
    EXPECT_EQ(copy.methodCount, definition.methodCount);
    EXPECT_EQ(copy.constantCount, definition.constantCount);
    return copy;
}

} // namespace

void expectClass(const REALclassDefinition& definition, const ClassFacts& facts)
{
    EXPECT_EQ(definition.version, 13u);
    EXPECT_STREQ(definition.name, facts.name);
    EXPECT_EQ(definition.superName, nullptr);
    EXPECT_EQ(definition.dataSize, facts.dataSize);
    EXPECT_EQ(definition.constructor != nullptr, facts.hasLifetimeFunctions);
    EXPECT_EQ(definition.destructor != nullptr, facts.hasLifetimeFunctions);
    EXPECT_EQ(definition.flags, 4u);
    const struct {
        const char* name;
        const void* rows;
        Word count, expected;
    } arrays[] = {
        {"properties", definition.properties, definition.propertyCount, facts.properties},
        {"methods", definition.methods, definition.methodCount, facts.methods},
        {"events", definition.events, definition.eventCount, facts.events},
        {"event instances", definition.eventInstances, definition.eventInstanceCount, 0},
        {"constants", definition.constants, definition.constantCount, facts.constants},
        {"shared properties", definition.sharedProperties, definition.sharedPropertyCount, 0},
        {"shared methods", definition.sharedMethods, definition.sharedMethodCount, facts.sharedMethods},
    };
    for (const auto& array : arrays) {
        EXPECT_EQ(array.count, array.expected) << array.name;
        EXPECT_EQ(array.rows != nullptr, array.expected > 0) << array.name;
    }
    EXPECT_EQ(definition.interfaces, nullptr);
    for (const Word word : definition.unused) EXPECT_EQ(word, 0u);
    for (const Word word : definition.newer) EXPECT_EQ(word, 0u);
}

void expectProperties(const REALclassDefinition& definition, const std::vector<PropertyFact>& facts)
{
    ASSERT_EQ(definition.propertyCount, facts.size());
    const auto* row = static_cast<const REALproperty*>(definition.properties);
    for (const PropertyFact& fact : facts) {
        SCOPED_TRACE(fact.name);
        const Access access = fact.access;
        const bool isField =
            access == Access::field || access == Access::writableField || access == Access::fieldWithSetter;
        const bool isReadOnly = access == Access::field || access == Access::getter;
        EXPECT_STREQ(row->group, fact.group);
        EXPECT_STREQ(row->name, fact.name);
        EXPECT_STREQ(row->type, fact.type);
        EXPECT_EQ(row->flags, 6u);
        EXPECT_NE(row->getter, nullptr);
        EXPECT_EQ(reinterpret_cast<Word>(row->getter) == REALstandardGetter, isField);
        EXPECT_EQ(row->setter == nullptr, isReadOnly);
        EXPECT_EQ(reinterpret_cast<Word>(row->setter) == REALstandardSetter, access == Access::writableField);
        EXPECT_EQ(row->parameter, fact.offset);
        EXPECT_EQ(row->editor, nullptr);
        EXPECT_EQ(row->enumeration, nullptr);
        EXPECT_EQ(row->tenth, 0u);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

void expectMethods(const void* rows, Word count, const std::vector<MethodFact>& facts)
{
    ASSERT_EQ(count, facts.size());
    const auto* row = static_cast<const REALmethod*>(rows);
    for (const MethodFact& fact : facts) {
        SCOPED_TRACE(fact.declaration);
        EXPECT_STREQ(row->declaration, fact.declaration);
        EXPECT_EQ(row->flags, fact.flags);
        EXPECT_NE(row->function, nullptr);
        EXPECT_EQ(row->setter != nullptr, fact.isIndexedProperty);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

void expectConstants(const REALclassDefinition& definition, const std::vector<const char*>& declarations)
{
    ASSERT_EQ(definition.constantCount, declarations.size());
    const auto* row = static_cast<const REALconstant*>(definition.constants);
    for (const char* const declaration : declarations) {
        EXPECT_STREQ(row->declaration, declaration);
        for (const Word word : row->further) EXPECT_EQ(word, 0u);
        ++row;
    }
}

void expectDifferentFunctions(const REALclassDefinition& definition, std::size_t count)
{
    std::multiset<AnyFunction> functions = {definition.constructor, definition.destructor};
    const auto* property = static_cast<const REALproperty*>(definition.properties);
    for (Word i = 0; i < definition.propertyCount; ++i)
        functions.insert({property[i].getter, property[i].setter});
    const auto* method = static_cast<const REALmethod*>(definition.methods);
    for (Word i = 0; i < definition.methodCount; ++i)
        functions.insert({method[i].function, method[i].setter});
    functions.erase(nullptr);
    functions.erase(reinterpret_cast<AnyFunction>(REALstandardGetter));
    functions.erase(reinterpret_cast<AnyFunction>(REALstandardSetter));
    EXPECT_EQ(functions.size(), count);
    EXPECT_EQ(std::set<AnyFunction>(functions.begin(), functions.end()).size(), functions.size());
}

void expectRegisteredUnchanged(const REALclassDefinition& definition)
{
    const REALclassDefinition copy = registered(definition, newestLayout);
    EXPECT_EQ(copy.properties, definition.properties);
    EXPECT_EQ(copy.methods, definition.methods);
    EXPECT_EQ(copy.constants, definition.constants);
}

void expectRegisteredInLayout9(const REALclassDefinition& definition)
{
    const REALclassDefinition copy = registered(definition, 9);
    expectOlderRows(copy.properties, definition.properties, definition.propertyCount, sizeof(REALproperty9),
                    sizeof(REALproperty));
    expectOlderRows(copy.methods, definition.methods, definition.methodCount, sizeof(REALmethod9),
                    sizeof(REALmethod));
    expectOlderRows(copy.constants, definition.constants, definition.constantCount, sizeof(REALconstant9),
                    sizeof(REALconstant));
    EXPECT_EQ(copy.events, nullptr) << "the class has no events";
    EXPECT_EQ(copy.sharedMethods, nullptr) << "the class has no shared methods";
}

std::string valueOf(const REALproperty& row, REALobjectStruct* object, HostInteger parameter)
{
    const std::string_view type = row.type;
    char text[64];
    if (type == "Integer")
        std::snprintf(text, sizeof text, "%" PRIdPTR, callGetter<HostInteger>(row, object, parameter));
    else if (type == "UInt32")
        std::snprintf(text, sizeof text, "%" PRIu32, callGetter<std::uint32_t>(row, object, parameter));
    else if (type == "Boolean")
        return callGetter<HostBoolean>(row, object, parameter) ? "true" : "false";
    else if (type == "Single")
        std::snprintf(text, sizeof text, "%g", double{callGetter<float>(row, object, parameter)});
    else if (type == "Double")
        std::snprintf(text, sizeof text, "%g", callGetter<double>(row, object, parameter));
    else
        throw std::runtime_error(std::string("not a numeric property: ") + row.name + " as " + row.type);
    return text;
}

void expectValue(const REALproperty& row, REALobjectStruct* object, const std::string& value)
{
    for (const HostInteger parameter : anyParameter)
        EXPECT_EQ(valueOf(row, object, parameter), value) << row.name << ", parameter " << parameter;
}

} // namespace support
