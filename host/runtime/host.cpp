#include "host/runtime/host.h"

#include "host/runtime/calls/caller.h"
#include "host/runtime/services/builtin_classes.h"
#include "host/runtime/services/service_table.h"
#include "host/runtime/state.h"
#include "host/runtime/values/native.h"
#include "host/runtime/values/records.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace host {

namespace {

Host* currentHost = nullptr;

constexpr double opaqueRecordsFrom = 2016.0;

const ClassInfo& needClass(const Host& host, std::string_view name)
{
    if (const auto* info = host.findClass(name)) return *info;
    std::string known;
    for (const auto& info : host.classes()) known += (known.empty() ? "" : ", ") + info->name;
    throw ProgramError(fmt::format("there is no class {}; known are {}", name, known));
}

const PropertyInfo& needSharedProperty(const ClassInfo& info, std::string_view name)
{
    if (const auto* property = info.sharedProperty(name)) return *property;
    throw ProgramError(fmt::format("{} has no shared property {}", info.name, name));
}

void needService(const std::string& name)
{
    for (const auto& service : serviceTable()) {
        if (service.name == name) return;
    }
    throw ProgramError(fmt::format("there is no service {} to withhold", name));
}

} // namespace

std::size_t ServiceLog::lookupsOf(std::string_view name) const
{
    const auto isIt = [&](const Lookup& lookup) { return lookup.name == name; };
    return static_cast<std::size_t>(std::count_if(lookups.begin(), lookups.end(), isIt));
}

std::size_t ServiceLog::callsOf(const std::string& name) const
{
    const auto found = calls.find(name);
    return found == calls.end() ? 0 : found->second;
}

Host::State* stateOrNull() { return currentHost ? &currentHost->state() : nullptr; }

Host::State& state() { return Host::current().state(); }

void noteMisuse(std::string sentence)
{
    auto* now = stateOrNull();
    if (!now) return;
    const std::lock_guard<std::mutex> lock(now->misuseLock);
    now->misuses.push_back(std::move(sentence));
}

Host::Host(Options options)
{
    if (currentHost) throw ProgramError("there is a host already; end it before making another");
    for (const auto& name : options.withheld) needService(name);
    state_ = std::make_unique<State>();
    state_->options = std::move(options);
    currentHost = this;
    for (const auto& service : serviceTable()) *service.calls = 0;
    registerBuiltInClasses();
}

Host::~Host()
{
    state_->pending = Object();
    const auto left = std::move(state_->live);
    currentHost = nullptr; // from here on, references that go drop nothing
    for (const void* value : left) abandonValue(value);
}

Host& Host::current()
{
    if (!currentHost) throw ProgramError("there is no host; make a host::Host first");
    return *currentHost;
}

Host* Host::currentOrNull() { return currentHost; }

void Host::enter(REALPluginMainFunction pluginMain)
{
    CallScope scope;
    pluginMain(resolver());
    scope.finish();
}

REALResolver Host::resolver()
{
    return [](const char* name) -> void* {
        auto* now = stateOrNull();
        if (!now || !name) return nullptr;
        const bool isWithheld = now->options.withheld.count(name) != 0;
        const auto* service = isWithheld ? nullptr : findService(name, now->options.version);
        if (now->isLogging) now->log.lookups.push_back({name, service != nullptr});
        return service ? service->function : nullptr;
    };
}

const std::vector<std::unique_ptr<ClassInfo>>& Host::classes() const { return state_->classes; }

std::vector<const ClassInfo*> Host::pluginClasses() const
{
    std::vector<const ClassInfo*> found;
    for (const auto& info : state_->classes) {
        if (!info->isBuiltIn) found.push_back(info.get());
    }
    return found;
}

const ClassInfo* Host::findClass(std::string_view name) const
{
    const auto isIt = [&](const auto& info) { return sameName(info->name, name); };
    const auto found = std::find_if(state_->classes.begin(), state_->classes.end(), isIt);
    return found == state_->classes.end() ? nullptr : found->get();
}

Object Host::createWith(std::string_view className, const std::vector<Argument>& arguments)
{
    const auto& info = needClass(*this, className);
    const auto constructors = info.methodsNamed("Constructor");
    if (constructors.empty() && !arguments.empty())
        throw ProgramError(fmt::format("{} has no constructor that takes arguments", info.name));
    const auto* constructor =
        constructors.empty() ? nullptr : &chooseOverload(constructors, arguments, info.name);
    auto object = makeObject(info);
    if (constructor) callMethod(object.get(), *constructor, arguments, info.name);
    return object;
}

Value Host::callSharedWith(std::string_view className, std::string_view method,
                           const std::vector<Argument>& arguments)
{
    const auto& info = needClass(*this, className);
    const auto methods = info.sharedMethodsNamed(method);
    if (methods.empty()) throw ProgramError(fmt::format("{} has no shared method {}", info.name, method));
    return callMethod(nullptr, chooseOverload(methods, arguments, info.name), arguments, info.name);
}

Value Host::getShared(std::string_view className, std::string_view name)
{
    const auto& info = needClass(*this, className);
    const auto& property = needSharedProperty(info, name);
    return readProperty(nullptr, ownerOf(info, property), property);
}

void Host::setShared(std::string_view className, std::string_view name, const Value& value)
{
    const auto& info = needClass(*this, className);
    const auto& property = needSharedProperty(info, name);
    writeProperty(nullptr, ownerOf(info, property), property, value);
}

Value Host::constant(std::string_view className, std::string_view name) const
{
    const auto& info = needClass(*this, className);
    if (const auto* constant = info.constant(name)) return literalValue(constant->value);
    throw ProgramError(fmt::format("{} has no constant {}", info.name, name));
}

const Options& Host::options() const { return state_->options; }

void Host::withhold(const std::string& service)
{
    needService(service);
    state_->options.withheld.insert(service);
}

void Host::provide(const std::string& service) { state_->options.withheld.erase(service); }

double Host::visibleVersion() const
{
    return state_->options.withheld.count("REALGetRBVersion") != 0 ? 0.0 : state_->options.version;
}

bool Host::areRecordsReadable() const { return visibleVersion() < opaqueRecordsFrom; }

void Host::onYield(std::function<void()> work) { state_->yield = std::move(work); }

void Host::logServices(bool isOn)
{
    state_->isLogging = isOn;
    if (!isOn) return;
    state_->log = {};
    for (const auto& service : serviceTable()) state_->callsBefore[service.name] = *service.calls;
}

const ServiceLog& Host::serviceLog() const
{
    if (!state_->isLogging) return state_->log;
    for (const auto& service : serviceTable()) {
        const auto count = *service.calls - state_->callsBefore[service.name];
        if (count > 0) state_->log.calls[service.name] = count;
    }
    return state_->log;
}

const std::vector<std::string>& Host::misuses() const { return state_->misuses; }

void Host::clearMisuses()
{
    const std::lock_guard<std::mutex> lock(state_->misuseLock);
    state_->misuses.clear();
}

std::unique_ptr<HostException> Host::takeException()
{
    const auto raised = std::exchange(state_->pending, Object());
    return raised ? std::make_unique<HostException>(asException(raised)) : nullptr;
}

void Host::rethrow()
{
    if (auto thrown = std::exchange(state_->handlerError, nullptr)) std::rethrow_exception(thrown);
}

} // namespace host
