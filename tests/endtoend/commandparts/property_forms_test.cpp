// `kvx get` prints every property of every audio object in a readable form, and none as hexadecimal bytes.
#include "tests/endtoend/loaded_host.h"

#include "host/kvx/library/core_audio.h"
#include "host/kvx/properties/property_values.h"

#include <gtest/gtest.h>

namespace {

using namespace endtoend;

using PropertyForms = LoadedHostTest;
using kvx::Form;
using kvx::Question;

/// Return the IDs of the system object, of all devices, and of their streams.
std::vector<kvx::ObjectID> allObjects(const kvx::CoreAudio& core)
{
    std::vector<kvx::ObjectID> objects = {kvx::systemObject};
    for (kvx::ObjectID device : kvx::itemsOf<kvx::ObjectID>(core.readSystem('dev#').value)) {
        objects.push_back(device);
        for (kvx::Code scope : {kvx::inputScope, kvx::outputScope})
            for (kvx::ObjectID stream : kvx::itemsOf<kvx::ObjectID>(core.read({device, 'stm#', scope}).value))
                objects.push_back(stream);
    }
    return objects;
}

TEST_F(PropertyForms, PrintEveryValueOfEveryObject)
{
    std::size_t values = 0;
    const kvx::CoreAudio core(loaded.host);
    for (kvx::ObjectID object : allObjects(core))
        for (const kvx::PropertyType& type : kvx::propertyTypes())
            for (kvx::Code scope : {kvx::globalScope, kvx::outputScope, kvx::inputScope})
                for (std::uint32_t element = 0; element <= 3; ++element) {
                    if (type.question != Question::none) continue;
                    const kvx::PropertyAddress address = {object, type.selector, scope, element};
                    const auto answer =
                        type.form == Form::reference ? core.readText(address) : core.read(address);
                    if (!answer.isGood()) continue;
                    ++values;
                    const std::string text = kvx::formatValue(type.form, type.extent, answer.value);
                    EXPECT_NE(text.substr(0, 6), "0000  ")
                        << kvx::formatCode(type.selector) << " of object " << object << ", "
                        << kvx::formatCode(scope) << ", element " << element << ": " << text;
                }
    EXPECT_GT(values, 300u);
}

TEST_F(PropertyForms, ExistForEverySelectorOfTheLibrary)
{
    const kvx::CoreAudio core(loaded.host);
    const auto names = core.selectorNames();
    EXPECT_EQ(names.size(), 79u);
    for (const std::string& name : names) {
        const auto selector = core.selectorNamed(name);
        ASSERT_TRUE(selector) << name;
        const bool isWildcard = *selector == '****';
        EXPECT_EQ(kvx::findPropertyType(*selector) == nullptr, isWildcard) << name;
    }
    EXPECT_FALSE(core.selectorNamed("kAudioPropertyWildcardChannel"))
        << "the constant is a number, not a selector";
    EXPECT_FALSE(core.selectorNamed("Lasterror"));
    EXPECT_FALSE(core.selectorNamed("kAudioNoSuch"));
}

} // namespace
