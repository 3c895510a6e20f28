// Tests of the contract of each service. The tests call a service as the plug-in does.
#include "tests/host/runtime/services.h"
#include "tests/support/temporary_folder.h"

#include <Carbon/Files.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>

namespace {

using namespace host;
using test::misuses;
using test::service;
using test::version;

using Strings = Ref<REALstringStruct>;
using Build = REALstringStruct*(const void*, HostInteger);
using BuildEncoded = REALstringStruct*(const void*, HostInteger, std::uint32_t);
using Convert = REALstringStruct*(REALstringStruct*, std::uint32_t);
using GetData = std::uint8_t(REALstringStruct*, std::uint32_t, REALstringData*);
using Dispose = void(REALstringData*);
using OnString = void(REALstringStruct*);
using OnObject = void(REALobjectStruct*);
using Length = HostInteger(REALstringStruct*);
using Load = AnyFunction(const void*, const char*);
using LoadMethod = AnyFunction(REALobjectStruct*, const char*);

String built(const void* bytes, HostInteger count)
{
    return String(Strings::adopt(service<Build>("REALBuildString")(bytes, count)));
}

TEST(Services, InRuntimeReturnsAnEightBitBoolean)
{
    for (bool isBuilt : {true, false}) {
        Options options;
        options.isBuiltProgram = isBuilt;
        Host host(options);
        EXPECT_EQ(service<std::uint8_t()>("REALinRuntime")(), isBuilt ? 1 : 0);
    }
}

TEST(Services, LockAndUnlockCountReferencesToObjects)
{
    Host host;
    const auto lock = service<OnObject>("REALLockObject"), unlock = service<OnObject>("REALUnlockObject");
    const Value all[] = {host.create("Dictionary"), MemoryBlock::ofSize(1), Array::ofType(Base::integer),
                         FolderItem::at("/")};
    for (const auto& value : all) {
        SCOPED_TRACE(value.describe());
        auto* object = static_cast<REALobjectStruct*>(value.reference().get());
        lock(object);
        EXPECT_EQ(referenceCount(object), 2u);
        unlock(object);
        EXPECT_EQ(referenceCount(object), 1u);
    }
    lock(nullptr);
    unlock(nullptr);
    EXPECT_EQ(misuses(), "");

    const auto string = String::of("x");
    lock(reinterpret_cast<REALobjectStruct*>(string.get()));
    EXPECT_EQ(misuses(), "REALLockObject was given a value of kind string, but takes one of kind object\n");
    EXPECT_EQ(referenceCount(string.get()), 1u) << "strings have their own services";
}

TEST(Services, TheLastUnlockDestroysTheObject)
{
    Host host;
    auto* object = host.create("Dictionary").detach();
    const auto unlock = service<OnObject>("REALUnlockObject");
    unlock(object);
    EXPECT_FALSE(isLive(object));
    EXPECT_EQ(misuses(), "");
    unlock(object);
    EXPECT_NE(misuses(), "") << "an unlock without a reference is a misuse";
    EXPECT_TRUE(host.leaks().isClean());
}

TEST(Services, StringsAreBuiltWithoutEncodingAndCounted)
{
    Host host(version(2015.99));
    const auto encodingOf = service<std::uint32_t(REALstringStruct*)>("REALGetStringEncoding");
    const auto setEncoding = service<void(REALstringStruct*, std::uint32_t)>("REALSetStringEncoding");
    const auto string = built("a\0b", 3);
    EXPECT_EQ(referenceCount(string.get()), 1u);
    EXPECT_EQ(string.bytes(), std::string_view("a\0b", 3));
    EXPECT_EQ(encodingOf(string.get()), std::uint32_t{encodingUnknown});
    EXPECT_EQ(string.get()->encoding, Word{encodingUnknown});
    setEncoding(string.get(), encodingASCII);
    EXPECT_EQ(encodingOf(string.get()), std::uint32_t{encodingASCII});
    EXPECT_EQ(string.get()->encoding, Word{encodingASCII})
        << "the plug-in sees the new encoding in REALstringStruct";
    EXPECT_EQ(string.bytes(), std::string_view("a\0b", 3)) << "a change of the encoding changes no bytes";

    service<OnString>("REALLockString")(string.get());
    EXPECT_EQ(referenceCount(string.get()), 2u);
    service<OnString>("REALUnlockString")(string.get());
    EXPECT_EQ(referenceCount(string.get()), 1u);

    EXPECT_EQ(built(nullptr, 0).bytes(), "");
    EXPECT_EQ(encodingOf(nullptr), std::uint32_t{encodingUnknown});
    setEncoding(nullptr, encodingASCII);
    service<OnString>("REALLockString")(nullptr);
    service<OnString>("REALUnlockString")(nullptr);
    EXPECT_EQ(misuses(), "");
    EXPECT_FALSE(built("x", -1));
    EXPECT_FALSE(built(nullptr, 1));
    EXPECT_EQ(host.misuses().size(), 2u);
}

TEST(Services, SetStringEncodingKeepsThePoison)
{
    Host host(version(2016.0));
    const auto string = built("a", 1);
    service<void(REALstringStruct*, std::uint32_t)>("REALSetStringEncoding")(string.get(), encodingASCII);
    EXPECT_NE(string.get()->encoding, Word{encodingASCII});
    EXPECT_EQ(string.encoding(), std::uint32_t{encodingASCII});
}

TEST(Services, StringsAreBuiltWithAnEncoding)
{
    Host host;
    const auto build = service<BuildEncoded>("REALBuildStringWithEncoding");
    const String string(Strings::adopt(build("\xE9", 1, encodingWindowsLatin1)));
    EXPECT_EQ(string.encoding(), std::uint32_t{encodingWindowsLatin1});
    EXPECT_EQ(string.text(), "\xC3\xA9");
}

TEST(Services, StringsAreConverted)
{
    Host host;
    const auto convert = service<Convert>("REALConvertString");
    const auto roman = String::ofBytes("\x8E", encodingMacRoman);
    const String utf8(Strings::adopt(convert(roman.get(), encodingUTF8)));
    EXPECT_EQ(utf8.bytes(), "\xC3\xA9");
    EXPECT_EQ(utf8.encoding(), std::uint32_t{encodingUTF8});
    EXPECT_EQ(referenceCount(utf8.get()), 1u);
    EXPECT_EQ(referenceCount(roman.get()), 1u);

    const String same(Strings::adopt(convert(roman.get(), encodingMacRoman)));
    EXPECT_EQ(same.get(), roman.get()) << "the same string, with one more reference";
    EXPECT_EQ(referenceCount(roman.get()), 2u);

    EXPECT_EQ(convert(nullptr, encodingUTF8), nullptr);
    EXPECT_EQ(convert(roman.get(), 0x0201), nullptr);
    EXPECT_EQ(convert(String::ofBytes("\x8E", encodingUnknown).get(), encodingUTF8), nullptr);
    const String ascii(Strings::adopt(convert(String::ofBytes("a", encodingUnknown).get(), encodingUTF16)));
    EXPECT_EQ(ascii.bytes(), std::string_view("a\0", 2)) << "plain ASCII needs no known encoding";
    EXPECT_EQ(misuses(), "");
}

TEST(Services, BytesAndLengthOfAStringAreAvailable)
{
    Host host;
    const auto string = String::ofBytes(std::string_view("a\0b", 3), encodingUTF8);
    const char* bytes = service<const char*(REALstringStruct*)>("StringGetCString")(string.get());
    EXPECT_EQ(std::memcmp(bytes, "a\0b\0", 4), 0) << "a zero byte follows the text";
    EXPECT_EQ(service<const char*(REALstringStruct*)>("StringGetCString")(nullptr), nullptr);

    const auto load = service<Load>("REALLoadGlobalMethod");
    const auto length = reinterpret_cast<Length*>(load(nullptr, "LenB( s as string ) as integer"));
    ASSERT_NE(length, nullptr);
    EXPECT_EQ(length(string.get()), 3);
    EXPECT_EQ(length(nullptr), 0);
    EXPECT_EQ(reinterpret_cast<Length*>(load(nullptr, "lenb(text As String) As Integer")), length);
    EXPECT_EQ(load(nullptr, "LenB( s as string ) as double"), nullptr);
    EXPECT_EQ(load(nullptr, "Len( s as string ) as integer"), nullptr);
    EXPECT_EQ(misuses(), "");
    EXPECT_EQ(load(string.get(), "LenB( s as string ) as integer"), nullptr);
    EXPECT_EQ(load(nullptr, nullptr), nullptr);
    EXPECT_EQ(load(nullptr, "LenB("), nullptr) << "an exception of the parser becomes a misuse";
    EXPECT_EQ(host.misuses().size(), 3u);
}

TEST(Services, StringDataLivesUntilItIsDisposed)
{
    Host host;
    const auto get = service<GetData>("PluginGetStringData");
    const auto dispose = service<Dispose>("PluginDisposeStringData");
    auto string = String::ofBytes("\x8E!", encodingMacRoman);
    REALstringData data;
    std::memset(&data, 0x55, sizeof data);
    ASSERT_TRUE(get(string.get(), encodingUTF8, &data));
    EXPECT_EQ(std::string_view(data.bytes, static_cast<std::size_t>(data.length)), "\xC3\xA9!");
    EXPECT_EQ(data.bytes[data.length], 0);
    EXPECT_EQ(host.leaks().count(Kind::stringData), 1u);
    dispose(&data);
    EXPECT_EQ(data.bytes, nullptr);
    EXPECT_EQ(host.leaks().count(Kind::stringData), 0u);
    EXPECT_EQ(host.leaks().count(Kind::string), 1u) << "the converted string is destroyed";

    REALstringData own;
    ASSERT_TRUE(get(string.get(), encodingMacRoman, &own));
    string = String();
    EXPECT_EQ(std::string_view(own.bytes, static_cast<std::size_t>(own.length)), "\x8E!")
        << "the string data keeps the string alive";
    dispose(&own);
    EXPECT_TRUE(host.leaks().isClean());

    std::memset(&data, 0x55, sizeof data);
    EXPECT_FALSE(get(nullptr, encodingUTF8, &data));
    EXPECT_EQ(data.bytes, nullptr);
    EXPECT_EQ(data.length, 0);
    EXPECT_FALSE(get(String::of("x").get(), 0x0201, &data));
    dispose(&data); // has no effect, because `data` has no text
    EXPECT_EQ(misuses(), "");
    EXPECT_FALSE(get(String::of("x").get(), encodingUTF8, nullptr));
    dispose(nullptr);
    EXPECT_EQ(host.misuses().size(), 2u);
}

TEST(Services, StringDataMayLackItsTerminator)
{
    Options options;
    options.isStringDataTerminated = false;
    Host host(options);
    const auto string = String::of("ab");
    REALstringData data;
    ASSERT_TRUE(service<GetData>("PluginGetStringData")(string.get(), encodingUTF8, &data));
    EXPECT_EQ(std::memcmp(data.bytes, "ab!", 3), 0);
    EXPECT_EQ(data.length, 2);
    service<Dispose>("PluginDisposeStringData")(&data);
    EXPECT_EQ(host.leaks().total(), 1u);
}

TEST(Services, StringDataLeaksAreReported)
{
    Host host;
    REALstringData data;
    ASSERT_TRUE(service<GetData>("PluginGetStringData")(String::of("ab").get(), encodingUTF16, &data));
    EXPECT_EQ(host.leaks().text(), "1 string\n1 string data\n");
}

TEST(Services, MemoryBlocksAreMadeAndRead)
{
    Host host;
    const auto make = service<REALmemoryBlockStruct*(HostInteger)>("newMemoryBlock");
    const auto bytes = service<void*(REALmemoryBlockStruct*)>("memoryBlockGetPtr");
    const auto size = service<HostInteger(REALmemoryBlockStruct*)>("memoryBlockGetSize");
    const MemoryBlock block(MemoryBlock::adopt(make(100)));
    EXPECT_EQ(referenceCount(block.get()), 1u);
    EXPECT_EQ(bytes(block.get()), block.data());
    EXPECT_EQ(size(block.get()), 100);
    const MemoryBlock empty(MemoryBlock::adopt(make(0)));
    ASSERT_TRUE(empty);
    EXPECT_EQ(bytes(empty.get()), nullptr);
    EXPECT_EQ(size(empty.get()), 0);
    EXPECT_EQ(make(-1), nullptr);
    EXPECT_EQ(bytes(nullptr), nullptr);
    EXPECT_EQ(size(nullptr), 0);
    EXPECT_EQ(misuses(), "");
    const auto dictionary = host.create("Dictionary");
    EXPECT_EQ(size(reinterpret_cast<REALmemoryBlockStruct*>(dictionary.get())), 0);
    EXPECT_EQ(host.misuses().size(), 1u);
}

TEST(Services, IntegerArraysAreMadeFilledAndRead)
{
    for (double v : {2012.5, 2013.0, 2016.0}) {
        SCOPED_TRACE(v);
        Host host(version(v));
        const auto make =
            service<REALarrayStruct*(HostInteger, HostInteger)>("RuntimeArrayCreateSingleDimBoundedArray");
        const auto bound = service<HostInteger(REALarrayStruct*)>("RuntimeUBound");
        using Give = AnyFunction(REALarrayStruct*);
        const bool isNewer = v >= 2013.0;
        const auto inserter =
            service<Give>(isNewer ? "PluginIntegerArrayInsertProc" : "RuntimeArrayDirectGetInsertProc");
        const auto getter =
            service<Give>(isNewer ? "PluginIntegerArrayGetProc" : "RuntimeArrayDirectGetGetProc");

        const Array array(Array::adopt(make(0, -1)));
        ASSERT_TRUE(array);
        EXPECT_EQ(bound(array.get()), -1);
        const auto insert =
            reinterpret_cast<void (*)(REALarrayStruct*, HostInteger, HostInteger)>(inserter(array.get()));
        const auto get =
            reinterpret_cast<HostInteger (*)(REALarrayStruct*, HostInteger)>(getter(array.get()));
        for (HostInteger value : {HostInteger{7}, HostInteger{-1}})
            insert(array.get(), bound(array.get()) + 1, value);
        insert(array.get(), 1, 8);
        EXPECT_EQ(bound(array.get()), 2);
        EXPECT_EQ(array.numbers(), (std::vector<double>{7, 8, -1}));
        EXPECT_EQ(get(array.get(), 2), -1);
        EXPECT_EQ(misuses(), "");
        EXPECT_EQ(get(array.get(), 3), 0);
        EXPECT_EQ(get(array.get(), -1), 0);
        insert(array.get(), 9, 1);
        EXPECT_EQ(host.misuses().size(), 3u);
        EXPECT_EQ(bound(array.get()), 2);
        EXPECT_EQ(make(0, std::numeric_limits<HostInteger>::max()), nullptr) << "too many elements";
        EXPECT_EQ(host.misuses().size(), 4u);

        const Array filled(Array::adopt(make(0, 4)));
        EXPECT_EQ(filled.numbers(), std::vector<double>(5, 0.0));
        EXPECT_EQ(bound(nullptr), -1);
        EXPECT_EQ(inserter(nullptr), nullptr);
        EXPECT_EQ(getter(nullptr), nullptr);
        EXPECT_EQ(make(0, -2), nullptr);
        EXPECT_EQ(make(99, 0), nullptr);
    }
}

TEST(Services, GettersReadSinglesAndDoubles)
{
    using Give = AnyFunction(REALarrayStruct*);
    for (double v : {2012.5, 2016.0}) {
        SCOPED_TRACE(v);
        Host host(version(v));
        const auto singles = Array::of(std::vector<float>{1.5f, -0.25f});
        const auto doubles = Array::of(std::vector<double>{1e300, -0.1});
        const auto forSingles =
            service<Give>(v < 2013.0 ? "RuntimeArrayDirectGetGetProc" : "PluginSingleArrayGetProc");
        const auto forDoubles =
            service<Give>(v < 2013.0 ? "RuntimeArrayDirectGetGetProc" : "PluginDoubleArrayGetProc");
        using Single = float (*)(REALarrayStruct*, HostInteger);
        using Double = double (*)(REALarrayStruct*, HostInteger);
        EXPECT_EQ(reinterpret_cast<Single>(forSingles(singles.get()))(singles.get(), 1), -0.25f);
        EXPECT_EQ(reinterpret_cast<Double>(forDoubles(doubles.get()))(doubles.get(), 0), 1e300);
        EXPECT_EQ(misuses(), "");
    }
    Host host;
    EXPECT_EQ(service<Give>("PluginSingleArrayGetProc")(Array::of(std::vector<double>{1}).get()), nullptr);
    EXPECT_EQ(misuses(), "PluginSingleArrayGetProc was given an array of Double\n");
}

TEST(Services, VariantsContainStringsAndIntegers)
{
    Host host;
    const auto text = String::of("x");
    const auto* variant = service<REALobjectStruct*(REALstringStruct*)>("StringToVariant")(text.get());
    EXPECT_EQ(kindOf(variant), Kind::variant);
    EXPECT_EQ(referenceCount(text.get()), 2u);
    EXPECT_EQ(Value(AnyRef::share(const_cast<REALobjectStruct*>(variant))).text(), "x");
    release(variant);
    EXPECT_EQ(referenceCount(text.get()), 1u);

    for (const char* name : {"IntegerToVariant", "Int32ToVariant"}) {
        const auto number = AnyRef::adopt(service<REALobjectStruct*(HostInteger)>(name)(-5));
        EXPECT_EQ(kindOf(number.get()), Kind::variant);
        EXPECT_EQ(Value(number).integer(), -5);
    }
    const auto nil = AnyRef::adopt(service<REALobjectStruct*(REALstringStruct*)>("StringToVariant")(nullptr));
    ASSERT_TRUE(nil);
    EXPECT_TRUE(Value(nil).isNil());
    EXPECT_EQ(misuses(), "");
}

TEST(Services, NewInstancesAreMadeByClassName)
{
    Host host;
    const auto make = service<REALobjectStruct*(const char*)>("PluginNewInstance");
    for (const char* name :
         {"RuntimeException", "OutOfMemoryException", "OutOfBoundsException", "NilObjectException",
          "UnsupportedOperationException", "IllegalCastException", "Dictionary", "dictionary"}) {
        const Object object(Object::adopt(make(name)));
        ASSERT_TRUE(object) << name;
        EXPECT_EQ(referenceCount(object.get()), 1u);
    }
    EXPECT_EQ(make("NoSuchClass"), nullptr);
    EXPECT_EQ(make(nullptr), nullptr);
    EXPECT_EQ(misuses(), "");
}

TEST(Services, PropertiesOfExceptionsAreSet)
{
    Host host;
    const auto exception = host.create("OutOfBoundsException");
    const auto setText =
        service<void(REALobjectStruct*, const char*, REALstringStruct*)>("REALSetPropValueString");
    const auto setNumber =
        service<void(REALobjectStruct*, const char*, HostInteger)>("REALSetPropValueInteger");
    const auto text = String::of("why");
    setText(exception.get(), "Message", text.get());
    setNumber(exception.get(), "ErrorNumber", 12);
    EXPECT_EQ(exception.get("Message").text(), "why");
    EXPECT_EQ(exception.get("ErrorNumber").integer(), 12);
    EXPECT_EQ(referenceCount(text.get()), 2u);
    setText(exception.get(), "Message", nullptr);
    EXPECT_TRUE(exception.get("Message").isNil());
    EXPECT_EQ(referenceCount(text.get()), 1u);
    EXPECT_EQ(misuses(), "");
    setText(exception.get(), "NoSuchProperty", text.get());
    setNumber(exception.get(), "Message", 1);
    setNumber(nullptr, "ErrorNumber", 1);
    setNumber(exception.get(), nullptr, 1);
    EXPECT_EQ(host.misuses().size(), 4u);
}

TEST(Services, RaisedExceptionsWaitForTheProgram)
{
    Host host;
    const auto raise = service<OnObject>("RuntimeRaiseException");
    auto exception = host.create("NilObjectException");
    exception.set("Message", "file is nil");
    raise(exception.get());
    EXPECT_EQ(referenceCount(exception.get()), 2u);
    const auto taken = host.takeException();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->className(), "NilObjectException");
    EXPECT_EQ(taken->message(), "file is nil");
    EXPECT_EQ(taken->errorNumber(), 0);
    EXPECT_STREQ(taken->what(), "NilObjectException: file is nil");
    EXPECT_FALSE(host.takeException()) << "takeException() removes the exception";
    EXPECT_EQ(referenceCount(exception.get()), 1u);
    EXPECT_EQ(misuses(), "");
    raise(nullptr);
    EXPECT_EQ(host.misuses().size(), 1u);
    raise(host.create("Dictionary").get());
    EXPECT_EQ(host.misuses().size(), 2u) << "a dictionary is not an exception";
}

TEST(Services, MethodsOfADictionaryAreLoadedByDeclaration)
{
    Host host;
    const auto load = service<LoadMethod>("REALLoadObjectMethod");
    const auto dictionary = host.create("Dictionary");
    using Assign = void (*)(REALobjectStruct*, REALobjectStruct*, REALobjectStruct*);
    using Look = REALobjectStruct* (*)(REALobjectStruct*, REALobjectStruct*);
    using KeyAt = REALobjectStruct* (*)(REALobjectStruct*, HostInteger);
    const auto assign =
        reinterpret_cast<Assign>(load(dictionary.get(), "Value(key As Variant, Assigns _value As Variant)"));
    const auto look = reinterpret_cast<Look>(load(dictionary.get(), "Value(key As Variant) As Variant"));
    const auto keyAt = reinterpret_cast<KeyAt>(load(dictionary.get(), "Key(index As Integer) As Variant"));
    ASSERT_NE(assign, nullptr);
    ASSERT_NE(look, nullptr);
    ASSERT_NE(keyAt, nullptr);

    const auto text = String::of("Speakers");
    auto* key = service<REALobjectStruct*(HostInteger)>("IntegerToVariant")(42);
    auto* value = service<REALobjectStruct*(REALstringStruct*)>("StringToVariant")(text.get());
    assign(dictionary.get(), key, value);
    const Value found(AnyRef::adopt(look(dictionary.get(), key)));
    const Value first(AnyRef::adopt(keyAt(dictionary.get(), 0)));
    release(key);
    release(value);
    EXPECT_EQ(found.text(), "Speakers");
    EXPECT_EQ(first.integer(), 42);
    EXPECT_EQ(dictionary.get("Value", 42).text(), "Speakers");

    EXPECT_EQ(load(dictionary.get(), "Value(key As Variant, _value As Variant)"), nullptr);
    EXPECT_EQ(load(dictionary.get(), "Nothing"), nullptr);
    EXPECT_EQ(load(nullptr, "Clear"), nullptr);
    EXPECT_EQ(misuses(), "");
}

TEST(Services, YieldRunsTheWorkOfTheProgram)
{
    Host host;
    const auto yield = service<void()>("REALYieldToRB");
    yield();
    int count = 0;
    host.onYield([&] { ++count; });
    yield();
    yield();
    EXPECT_EQ(count, 2);
    host.onYield([] { throw std::runtime_error("from the program"); });
    yield(); // The host keeps the exception, because no exception may pass through the plug-in.
    EXPECT_THROW(host.rethrow(), std::runtime_error);
    host.rethrow();
}

// ---- folder items ----

std::string pathOf(const FSRef& reference)
{
    UInt8 path[4096] = {};
    EXPECT_EQ(FSRefMakePath(&reference, path, sizeof path), 0);
    return reinterpret_cast<const char*>(path);
}

TEST(Services, FolderItemsBecomeReferencesOfThePlatform)
{
    Host host;
    const support::TemporaryFolder folder;
    const std::string folderPath = std::filesystem::canonical(folder.path());
    std::ofstream(folder / "caf\xC3\xA9.wav") << "x";
    const auto refer = service<std::uint8_t(REALfolderItemStruct*, FSRef*, void*)>("REALFSRefFromFolderItem");
    FSRef reference = {};
    const auto item = FolderItem::at(folder / "caf\xC3\xA9.wav");
    EXPECT_TRUE(refer(item.get(), &reference, nullptr));
    EXPECT_EQ(pathOf(reference), folderPath + "/caf\xC3\xA9.wav");

    HFSUniStr255 name;
    std::memset(&name, 0x55, sizeof name);
    EXPECT_TRUE(refer(item.get(), &reference, &name));
    EXPECT_EQ(pathOf(reference), folderPath) << "with a name, the reference is the parent folder's";
    EXPECT_EQ(std::u16string(name.unicode, name.unicode + name.length), u"caf\u00E9.wav");
    EXPECT_EQ(name.unicode[254], 0) << "zeros follow the name";

    EXPECT_FALSE(refer(nullptr, &reference, nullptr));
    EXPECT_EQ(misuses(), "");
    EXPECT_FALSE(refer(item.get(), nullptr, nullptr));
    EXPECT_EQ(host.misuses().size(), 1u);
}

} // namespace
