// A small host in memory, for tests of the plug-in's frame: records of the real shape, counted references,
// every service by name. It is a second reading of what a host does, and shares nothing with the host of this
// tree.
//
// Every look-up and every call is noted in order. A look-up reads "? REALBuildString", or "? X: none" when
// the host does not know the name; a call reads `REALBuildString("abc", 3) = s1`. Values go by short names:
// s1 the first string, o2, m3, a4 and f5 the second object, third memory block, fourth array and fifth folder
// item. The reference of a folder item holds "the item", or "its folder" where a name is asked for.
//
// From version 2016.0 on the records hold decoys, so that whoever reads them instead of asking gets wrong
// text. One host lives at a time. Thread: [main].
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

/// Bytes as a note shows them: quoted, anything unprintable as \xNN; more than 100 by their number alone.
std::string quoted(std::string_view bytes);

/// An exception that was raised, as the host program sees it.
struct Raised {
    std::string className;
    std::optional<std::string> message;    ///< none: null
    std::optional<std::uint32_t> encoding; ///< of the message
    std::optional<HostInteger> number;     ///< none: never set
};

/// The definition that a registration handed over, word for word as it was at that moment.
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

    /// The resolver that this host hands to a plug-in.
    static void* resolve(const char* name);

    // ---- what it is like ----

    double version;
    bool isBuiltProgram = true;
    std::set<std::string> classes;                ///< what it can make an instance of
    HostInteger largestBlock = 1 << 20;           ///< bytes; a larger memory block is refused
    bool blocksHaveBytes = true;                  ///< false: a block's address is null
    std::string behindText;                       ///< what stands behind a text's last byte
    ElementType directGet = ElementType::integer; ///< what "RuntimeArrayDirectGetGetProc" hands out
    std::optional<HostInteger> claimedLength;     ///< what "LenB" answers, whatever is true
    Word dataOffset = 0;                          ///< written into each definition at registration
    bool itemsExist = true;                       ///< false: a folder item refers only to its folder and name
    std::u16string itemName = u"song.wav";        ///< of every folder item
    std::optional<std::uint16_t> claimedNameUnits; ///< its length, whatever is true

    /// The host does not know this name. "LenB" is its method of that name.
    void withhold(const std::string& name) { withheld_.insert(name); }
    void provide(const std::string& name) { withheld_.erase(name); }

    /// The next `times` calls of a service answer zero, null or false, and do nothing.
    void failNext(const std::string& name, int times = 1) { failures_[name] = times; }

    /// Run `action` in the next call of a service, before it does anything; it may throw.
    void inNext(const std::string& name, std::function<void()> action) { actions_[name] = std::move(action); }

    // ---- what has happened ----

    const Notes& notes() const { return notes_; }
    Notes calls() const;   ///< the notes that are not look-ups
    Notes lookUps() const; ///< the names asked for
    void forget() { notes_.clear(); }
    /// Nothing noted, nothing raised, and the next string is s1 again.
    void startOver();

    const std::vector<Raised>& raised() const { return raised_; }
    const std::vector<Registration>& registrations() const { return registrations_; }

    /// What is still referenced, "s1: 2", and text data not given back, "data of s1".
    Notes live() const;
    /// What a plug-in must never do, done: a reference dropped twice, data disposed twice, a foreign address.
    const Notes& faults() const { return faults_; }

    // ---- values; each comes with one reference, the maker's ----

    REALstringStruct* newString(std::string_view bytes, std::uint32_t encoding);
    REALobjectStruct* newObject(const std::string& className);
    REALmemoryBlockStruct* newMemoryBlock(std::string_view bytes);
    REALfolderItemStruct* newFolderItem();
    REALarrayStruct* newIntegers(const std::vector<HostInteger>& elements);
    REALarrayStruct* newSingles(const std::vector<float>& elements);
    REALarrayStruct* newDoubles(const std::vector<double>& elements);
    void hold(const void* value); ///< one reference more, without a note
    void drop(const void* value); ///< one reference, without a note
    void dropAll();               ///< every value, and all text data

    std::string bytesOf(const REALstringStruct* text) const;
    std::uint32_t encodingOf(const REALstringStruct* text) const;
    std::string bytesOf(const REALmemoryBlockStruct* block) const;
    int references(const void* value) const; ///< 0 when it is gone
    std::string nameOf(const void* value) const;

    /// Where a string's own bytes stand, for whoever must not get a copy of them.
    const char* storageOf(const REALstringStruct* text) const;
    void setUpperBound(REALarrayStruct* array, HostInteger upperBound); ///< whatever its storage holds
    bool knows(const void* value) const { return values_.count(value) > 0; }

    std::map<std::string, AnyFunction> objectMethods;                        ///< by declaration
    std::map<std::pair<REALobjectStruct*, Word>, AnyFunction> eventHandlers; ///< by object and system use

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
    std::map<std::string, int> failures_;
    std::map<std::string, std::function<void()>> actions_;
    std::map<const void*, std::unique_ptr<Value>> values_;
    std::map<std::size_t, std::unique_ptr<TextData>> textData_;
    std::map<char, int> counters_;
    std::size_t nextTextData_ = 1;
    std::vector<Raised> raised_;
    std::vector<Registration> registrations_;
};

} // namespace fake
