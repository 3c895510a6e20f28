#include "host/runtime/host.h"

#include "host/runtime/calls/dynamic_call.h"
#include "host/runtime/calls/events.h"
#include "host/runtime/calls/overload.h"
#include "host/runtime/load_library.h"
#include "host/runtime/services/builtin_classes.h"
#include "host/runtime/services/services.h"
#include "host/runtime/support/misuse.h"
#include "host/runtime/support/per_host.h"

#include <fmt/format.h>

#include <utility>

namespace host {

/// The state that the layers keep for the host. The live values are the last member, so they are destroyed
/// first; a reference in another member then releases nothing.
struct Host::Layers {
    PerHost<Options> options;
    PerHost<Misuses> misuses;
    PerHost<ClassTable> classes;
    PerHost<Exceptions> exceptions;
    PerHost<EventFunctions> events;
    PerHost<ServiceState> services;
    PerHost<LiveValues> values;

    explicit Layers(Options chosen) : options(std::move(chosen)) {}
};

namespace {

Host* currentHost = nullptr;

const PropertyInfo& sharedProperty(std::string_view className, std::string_view name)
{
    const ClassInfo& info = classNamed(className);
    if (const PropertyInfo* property = info.sharedProperty(name)) return *property;
    throw ProgramError(fmt::format("{} has no shared property {}", info.name, name));
}

} // namespace

Host::Host(Options options)
{
    if (currentHost) throw ProgramError("a host exists already; destroy it before making another one");
    for (const std::string& name : options.withheld) checkServiceName(name);
    layers_ = std::make_unique<Layers>(std::move(options));
    currentHost = this;
    registerBuiltInClasses();
}

Host::~Host()
{
    // Release the exception object while the host is current, because its destructor may call services.
    stateOf<Exceptions>().raised = {};
    currentHost = nullptr;
}

Host& Host::current()
{
    if (!currentHost) throw ProgramError("no host exists; make a host::Host first");
    return *currentHost;
}

Host* Host::currentOrNull() { return currentHost; }

void Host::load(const std::string& path)
{
    if (!libraryPath_.empty())
        throw LoadError(fmt::format("{}: {} is loaded already; make another host for another library", path,
                                    libraryPath_));
    const REALPluginMainFunction pluginMain = loadLibrary(path);
    libraryPath_ = path;
    enter(pluginMain);
}

void Host::enter(REALPluginMainFunction pluginMain)
{
    CallScope scope;
    pluginMain(resolver());
    scope.throwRaised();
}

const std::vector<std::unique_ptr<ClassInfo>>& Host::classes() const { return stateOf<ClassTable>().classes; }

std::vector<const ClassInfo*> Host::pluginClasses() const
{
    std::vector<const ClassInfo*> found;
    for (const auto& info : classes()) {
        if (!info->isBuiltIn) found.push_back(info.get());
    }
    return found;
}

Value Host::callSharedWith(std::string_view className, std::string_view method,
                           const std::vector<Argument>& arguments)
{
    const ClassInfo& info = classNamed(className);
    const std::vector<const MethodInfo*> methods = info.sharedMethodsNamed(method);
    if (methods.empty()) throw ProgramError(fmt::format("{} has no shared method {}", info.name, method));
    return callMethod(nullptr, chooseOverload(methods, arguments, info.name), arguments, info.name);
}

Value Host::getShared(std::string_view className, std::string_view name)
{
    return readProperty(nullptr, sharedProperty(className, name));
}

void Host::setShared(std::string_view className, std::string_view name, const Value& value)
{
    writeProperty(nullptr, sharedProperty(className, name), value);
}

Value Host::constant(std::string_view className, std::string_view name) const
{
    const ClassInfo& info = classNamed(className);
    if (const ConstantInfo* constant = info.constant(name)) return literalValue(constant->value);
    throw ProgramError(fmt::format("{} has no constant {}", info.name, name));
}

const Options& Host::options() const { return stateOf<Options>(); }

void Host::withhold(const std::string& service)
{
    checkServiceName(service);
    stateOf<Options>().withheld.insert(service);
}

void Host::provide(const std::string& service) { stateOf<Options>().withheld.erase(service); }

void Host::onYield(std::function<void()> work) { stateOf<ServiceState>().yield = std::move(work); }

const std::vector<std::string>& Host::misuses() const { return stateOf<Misuses>().sentences; }

void Host::clearMisuses()
{
    auto& misuses = stateOf<Misuses>();
    const std::lock_guard<std::mutex> guard(misuses.lock);
    misuses.sentences.clear();
}

LeakReport Host::leaks() const { return leakReport(); }

std::unique_ptr<HostException> Host::takeException()
{
    const Ref<REALobjectStruct> raised = std::exchange(stateOf<Exceptions>().raised, {});
    return raised ? std::make_unique<HostException>(asException(raised.get())) : nullptr;
}

void Host::rethrow()
{
    if (const std::exception_ptr thrown = std::exchange(stateOf<Exceptions>().handlerError, nullptr))
        std::rethrow_exception(thrown);
}

} // namespace host
