#include "tests/listener/watched_class.h"

#include "abi/accessor_sentinels.h"
#include "plugin/classes.h"
#include "plugin/process_state.h"
#include "plugin/register_class.h"
#include "plugin/services.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

namespace listening {

namespace {

constexpr Word dataOffset = 32;
constexpr std::size_t dataSize = sizeof(HostInteger) + 4 * sizeof(std::uint32_t);
WatchedClass* current = nullptr;

/// Initial state of the class, copied on first use because registration writes into the definition and the
/// event.
struct Pristine {
    REALclassDefinition definition = coreAudioListenerClass;
    REALevent event = *static_cast<REALevent*>(coreAudioListenerClass.events);
};
const Pristine& pristine()
{
    static const Pristine initial;
    return initial;
}

bool isOldest() { return coreAudioListenerClass.version == static_cast<Word>(oldestLayout); }

AnyFunction methodNamed(const std::string& name)
{
    // If there was no memory for the layout-9 copy of the methods, use the methods in the newest layout.
    const bool isCopy = isOldest() && coreAudioListenerClass.methods;
    const std::size_t rowWords = isCopy ? 4 : 6;
    const Word* row =
        static_cast<const Word*>(isCopy ? coreAudioListenerClass.methods : pristine().definition.methods);
    for (Word i = 0; i < coreAudioListenerClass.methodCount; ++i, row += rowWords) {
        const std::string declaration = reinterpret_cast<const char*>(row[2]);
        if (declaration.substr(0, declaration.find('(')) == name)
            return reinterpret_cast<AnyFunction>(row[0]);
    }
    throw std::runtime_error("the class has no method " + name);
}

template <class Service>
void forget(Service& service, const char* name)
{
    service.~Service();
    new (&service) Service(name);
}

} // namespace

WatchedClass::WatchedClass()
{
    current = this;
    registerFor(newestLayout);
}

WatchedClass::~WatchedClass()
{
    restore();
    current = nullptr;
}

void WatchedClass::registerFor(HostInteger layout, double version)
{
    restore();
    host_.reset();
    host_ = std::make_unique<fake::Host>(version);
    host_->dataOffset = dataOffset;
    gResolver = fake::Host::resolve;
    rbversion_rbversion = version;
    CurrentREALControlVersion = static_cast<int>(layout);
    forget(REALRegisterClass, "PluginRegisterClass");
    forget(REALGetEventInstance, "GetEventInstance");

    MyREALRegisterClass(&coreAudioListenerClass);
    // In place of the host, write the key into the event that the host received, in the layout that the host
    // reads.
    if (!coreAudioListenerClass.events) return host_->forget();
    if (layout == oldestLayout)
        static_cast<REALevent9*>(coreAudioListenerClass.events)->systemUse = eventWord;
    else
        static_cast<REALevent*>(coreAudioListenerClass.events)->systemUse = eventWord;
    host_->forget();
}

/// Restore the initial class, and free the copies for layout 9.
void WatchedClass::restore()
{
    const Pristine& initial = pristine();
    if (isOldest()) {
        std::free(coreAudioListenerClass.properties);
        std::free(coreAudioListenerClass.methods);
        std::free(coreAudioListenerClass.events);
    }
    *static_cast<REALevent*>(initial.definition.events) = initial.event;
    coreAudioListenerClass = initial.definition;
}

void WatchedClass::attach(Object object)
{
    host().eventHandlers[{object, eventWord}] = reinterpret_cast<AnyFunction>(&handle);
}

void WatchedClass::handle(Object object)
{
    current->events.push_back(object);
    if (current->inHandler) current->inHandler(object);
}

Memory::Memory() : bytes_(new char[dataOffset + dataSize])
{
    std::memset(bytes_, 0x5A, dataOffset + dataSize);
}
Memory::~Memory() { delete[] bytes_; }

HostInteger& Memory::lastError() const { return *reinterpret_cast<HostInteger*>(bytes_ + dataOffset); }

void construct(Object object, Address address)
{
    reinterpret_cast<void (*)(Object, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t)>(
        methodNamed("Constructor"))(object, address.object, address.selector, address.scope, address.element);
}

void destruct(Object object) { reinterpret_cast<void (*)(Object)>(methodNamed("Destructor"))(object); }

std::uint32_t read(Object object, const std::string& property)
{
    const std::size_t rowWords = isOldest() ? 10 : 12;
    const Word* row = static_cast<const Word*>(coreAudioListenerClass.properties);
    for (Word i = 0; i < coreAudioListenerClass.propertyCount; ++i, row += rowWords)
        if (reinterpret_cast<const char*>(row[1]) == property)
            return reinterpret_cast<std::uint32_t (*)(Object, HostInteger)>(row[4])(
                object, static_cast<HostInteger>(row[6]));
    throw std::runtime_error("the class has no property " + property);
}

} // namespace listening
