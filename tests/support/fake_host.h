// A host in memory for tests of the plug-in's functions, with real values, reference counts and all services.
// The fake host shares no code with the host in host/runtime, so that one error cannot be in both hosts.
//
// The host records every look-up and every call, in order. A look-up is recorded as "? REALBuildString", or
// as "? X: none" if the host has no such service; a call as `REALBuildString("abc", 3) = s1`. Values have
// short names: s1 is the first string, o2 the second object, m3 the third memory block, a4 the fourth array,
// f5 the fifth folder item. The file reference of a folder item holds the text "the item", or "its folder" if
// the caller asks for parent and name.
//
// From version 2016.0 on, the fields of strings and arrays that a plug-in sees hold wrong contents, so a
// plug-in that reads the fields instead of calling the services gets wrong text. Only one fake host exists at
// a time.
//
// All functions: [main].
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace fake {

using Notes = std::vector<std::string>;

/// Return bytes in the form of the recorded calls: in quotes, with unprintable bytes as \xNN. For more than
/// 100 bytes the form is their number.
std::string quoted(std::string_view bytes);

/// An exception that the plug-in raised, as the host program receives it.
struct Raised {
    std::string className;
    std::optional<std::string> message;    ///< message; none if the message is null
    std::optional<std::uint32_t> encoding; ///< encoding of the message
    std::optional<HostInteger> number;     ///< error number; none if the plug-in did not set it
};

/// A registered class definition, and a copy of the definition's machine words at the time of registration.
struct Registration {
    REALclassDefinition* definition;
    std::vector<Word> words;
};

enum class ElementType { integer, single, doubleFloat };

class Host {
public:
    explicit Host(double version = 2016.0);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Return the only fake host.
    /// Errors  throws std::logic_error if no fake host exists.
    static Host& current();

    /// The look-up function that a test passes to the plug-in: returns the address of a service, or null.
    static void* resolve(const char* name);

    // ---- the behaviour of the host ----

    /// Result of REALGetRBVersion. From 2016.0 on, the fields of values hold wrong contents. The version
    /// removes no service.
    double version;
    bool isBuiltProgram = true;
    bool recordsCalls = true;                     ///< whether calls are recorded; look-ups always are
    std::set<std::string> classes;                ///< classes of which the host can make instances
    HostInteger largestBlock = 1 << 20;           ///< size in bytes above which a memory block is refused
    bool blocksHaveBytes = true;                  ///< whether the address of a memory block is not null
    std::string afterText;                        ///< bytes in memory after the last byte of each string
    ElementType directGet = ElementType::integer; ///< element type of "RuntimeArrayDirectGetGetProc"
    std::optional<HostInteger> claimedLength;     ///< result of "LenB" instead of the real length
    Word dataOffset = 0;                          ///< offset that a registration writes into the definition
    bool itemsExist = true;                       ///< whether folder items exist, or only their parents
    std::u16string itemName = u"song.wav";        ///< name of every folder item
    /// Length that the host reports for a folder item's name instead of the real length, in UTF-16 units.
    std::optional<std::uint16_t> claimedNameUnits;

    /// Remove a service from the host, or restore it. The name "LenB" means the framework method that returns
    /// the length of a string in bytes.
    void withhold(const std::string& name) { withheld_.insert(name); }
    void provide(const std::string& name) { withheld_.erase(name); }
    void provideAll() { withheld_.clear(); }

    /// Make the next `times` calls of a service do nothing and return zero, null or false.
    void failNext(const std::string& name, int times = 1) { failures_[name] = times; }

    /// Run `action` at the start of the next call of a service. The action may throw.
    void inNext(const std::string& name, std::function<void()> action) { actions_[name] = std::move(action); }

    /// Function that runs at the start of every call of a service.
    std::function<void()> inEachCall;

    /// Make "memoryBlockGetSize" return `size` for one block, or "memoryBlockGetPtr" return null.
    void claimSize(REALmemoryBlockStruct* block, HostInteger size);
    void takeMemory(REALmemoryBlockStruct* block);

    // ---- recorded calls ----

    /// notes() returns all recorded look-ups and calls; calls() the calls; lookUps() the names of the
    /// look-ups.
    const Notes& notes() const { return notes_; }
    Notes calls() const;
    Notes lookUps() const;
    void forget() { notes_.clear(); }
    /// Forget recorded calls, raised exceptions and registrations, and number the next values from 1.
    void startOver();

    const std::vector<Raised>& raised() const { return raised_; }
    const std::vector<Registration>& registrations() const { return registrations_; }

    /// Return the values that are not released, with their reference counts, such as "s1: 2", and text data
    /// that the plug-in has not disposed, such as "data of s1".
    Notes live() const;
    /// Return descriptions of misuse: a reference or text data released twice, or an unknown address.
    const Notes& faults() const { return faults_; }

    // ---- values; the caller receives the first reference ----

    REALstringStruct* newString(std::string_view bytes, std::uint32_t encoding);
    REALobjectStruct* newObject(const std::string& className);
    REALmemoryBlockStruct* newMemoryBlock(std::string_view bytes);
    REALfolderItemStruct* newFolderItem();
    REALarrayStruct* newIntegers(const std::vector<HostInteger>& elements);
    REALarrayStruct* newSingles(const std::vector<float>& elements);
    REALarrayStruct* newDoubles(const std::vector<double>& elements);
    /// Add a reference to a value, as the host program does. No call is recorded.
    void hold(const void* value);
    /// Release a reference to a value, as the host program does. No call is recorded.
    void drop(const void* value);
    /// Destroy all values and text data, whatever their reference counts.
    void dropAll();

    std::string bytesOf(const REALstringStruct* text) const;
    std::uint32_t encodingOf(const REALstringStruct* text) const;
    std::string bytesOf(const REALmemoryBlockStruct* block) const;
    /// Return the reference count of a value, or 0 if the value is destroyed.
    int references(const void* value) const;
    std::string nameOf(const void* value) const;

    /// Return the address of a string's bytes, or of a memory block's bytes.
    const char* storageOf(const REALstringStruct* text) const;
    const char* storageOf(const REALmemoryBlockStruct* block) const;
    /// Set the upper bound that the host reports for an array. The elements do not change.
    void setUpperBound(REALarrayStruct* array, HostInteger upperBound);
    bool knows(const void* value) const { return values_.count(value) > 0; }

    std::map<std::string, AnyFunction> objectMethods; ///< methods of all objects, by declaration
    std::map<std::pair<REALobjectStruct*, Word>, AnyFunction>
        eventHandlers; ///< handlers by object and event key

private:
    friend struct Services;
    friend struct HostServices;
    friend struct TextServices;
    friend struct ArrayServices;
    struct Value;
    struct TextData;

    Value& add(char kind);
    Value* find(const void* value) const;
    REALstringStruct* convert(const REALstringStruct* text, std::uint32_t encoding);
    std::optional<std::string> converted(const REALstringStruct* text, std::uint32_t encoding) const;
    REALarrayStruct* newArray(ElementType type, const void* elements, std::size_t count, std::size_t size);
    void place(Value& text);
    void fault(const std::string& what) { faults_.push_back(what); }
    bool hasOpaqueRecords() const;

    Notes notes_;
    Notes faults_;
    std::set<std::string> withheld_;
    std::map<std::string, int, std::less<>> failures_;
    std::map<std::string, std::function<void()>, std::less<>> actions_;
    std::map<const void*, std::unique_ptr<Value>> values_;
    std::map<std::size_t, std::unique_ptr<TextData>> textData_;
    std::map<char, int> counters_;
    std::size_t nextTextData_ = 1;
    std::vector<Raised> raised_;
    std::vector<Registration> registrations_;
};

} // namespace fake
