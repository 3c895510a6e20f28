#include "platform/components/registered.h"

#include "platform/components/instances.h"
#include "platform/support/live_count.h"

#include <algorithm>

#include <pthread.h>

namespace kvxplatform::components {
namespace {

LiveCount liveComponents("Component");

/// The value of Registered::instances after the component has been unregistered.
constexpr long unregistered = -1;

struct Registered {
    Registered(const ComponentDescription& d, ComponentRoutineUPP e) : description(d), entry(e)
    {
        liveComponents.add();
    }
    ~Registered() { liveComponents.remove(); }
    Registered(const Registered&) = delete;

    const ComponentDescription description;
    const ComponentRoutineUPP entry;
    std::atomic<long> refcon{0};
    std::atomic<long> instances{0};
};

using Table = HandleTable<Registered, 3>;

// The registry is never destroyed, because an instance may still be closed while the program exits.
struct Registry {
    Table table;
    std::mutex lock;
    std::vector<HandleNumber> order; ///< handle numbers, oldest registration first; guarded by `lock`
};
Registry& registry()
{
    static Registry& all = *new Registry;
    return all;
}

/// The state of an instance of a registered component. The state keeps the component alive.
struct State {
    explicit State(Table::Use use) : component(std::move(use)) {}
    ~State()
    {
        if (isCounted) --component->instances;
    }
    State(const State&) = delete;

    /// Add the instance to the component's number of open instances.
    /// Returns  false if the component has been unregistered.
    bool count()
    {
        long open = component->instances;
        do {
            if (open == unregistered) return false;
        } while (!component->instances.compare_exchange_weak(open, open + 1));
        return isCounted = true;
    }

    const Table::Use component;
    bool isCounted = false;
    std::atomic<Handle> storage{nullptr};
    std::atomic<std::uintptr_t> closer{0}; ///< thread that closes the instance; 0 before the close
    std::atomic<bool> isClosed{false};
};

std::uintptr_t thisThread() { return static_cast<std::uintptr_t>(pthread_self()); }

/// Whether the calling thread may call the component's entry point for this instance. The close call may have
/// freed the storage, so only the closing thread may still call, until the close call has returned.
bool mayCall(const State& state)
{
    const std::uintptr_t closer = state.closer;
    return closer == 0 || (closer == thisThread() && !state.isClosed);
}

ComponentResult callEntry(State& state, ComponentParameters& parameters)
{
    return state.component->entry(&parameters, state.storage);
}

/// Call the component's entry point with the instance's handle as the only argument.
ComponentResult callWithSelf(Instance& instance, SInt16 selector)
{
    ComponentParameters parameters = {0, sizeof(long), selector, {reinterpret_cast<long>(instance.self)}};
    return callEntry(*static_cast<State*>(instance.state), parameters);
}

OSStatus openInstance(Instance& instance)
{
    Table::Use component = registry().table.use(numberOf(instance.component.self));
    if (!component) return invalidComponentID;
    if (!component->entry) return unresolvedComponentDLLErr;
    auto state = std::make_unique<State>(std::move(component));
    if (!state->count()) return invalidComponentID;
    instance.state = state.release();
    const ComponentResult refusal = callWithSelf(instance, kComponentOpenSelect);
    // The component's entry point may have closed the instance.
    if (!use(instance.self)) return refusal ? refusal : badComponentInstance;
    if (refusal) callWithSelf(instance, kComponentCloseSelect);
    return refusal;
}

void closeInstance(Instance& instance)
{
    State& state = *static_cast<State*>(instance.state);
    state.closer = thisThread();
    callWithSelf(instance, kComponentCloseSelect);
    state.isClosed = true;
}

void destroyState(void* state) { delete static_cast<State*>(state); }

ComponentResult dispatch(Instance& instance, ComponentParameters& parameters)
{
    State& state = *static_cast<State*>(instance.state);
    return mayCall(state) ? callEntry(state, parameters) : badComponentInstance;
}

const Family registeredFamily = {"registered component", openInstance, closeInstance, destroyState, dispatch};

Component describe(::Component handle, const Registered& component)
{
    return {component.description, &registeredFamily, nullptr, handle};
}

State* stateOf(const Instances::Use& instance)
{
    const bool isOurs = instance && instance->component.family == &registeredFamily;
    return isOurs ? static_cast<State*>(instance->state) : nullptr;
}

/// Run `function` on the registered component that `handle` names. The handle may be the component's own or
/// that of one of its instances.
template <class Function>
void withComponent(::Component handle, Function function)
{
    if (const Table::Use component = registry().table.use(numberOf(handle))) {
        function(*component);
        return;
    }
    const Instances::Use instance = use(reinterpret_cast<ComponentInstance>(handle));
    if (State* const state = stateOf(instance)) function(*state->component);
}

} // namespace

bool findRegistered(::Component handle, Component& out)
{
    const Table::Use component = registry().table.use(numberOf(handle));
    if (component) out = describe(handle, *component);
    return static_cast<bool>(component);
}

std::vector<Component> registeredAfter(::Component previous)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> guard(all.lock);
    auto from = all.order.begin();
    if (previous) {
        from = std::find(from, all.order.end(), numberOf(previous));
        if (from != all.order.end()) ++from;
    }
    std::vector<Component> found;
    for (; from != all.order.end(); ++from)
        if (const Table::Use component = all.table.use(*from))
            found.push_back(describe(handleOf<::Component>(*from), *component));
    return found;
}

::Component registerOne(const ComponentDescription& description, ComponentRoutineUPP entry)
{
    Registry& all = registry();
    const HandleNumber number = all.table.add(std::make_unique<Registered>(description, entry),
                                              [&all](Registered&, HandleNumber made) {
                                                  const std::lock_guard<std::mutex> guard(all.lock);
                                                  all.order.push_back(made);
                                                  return true;
                                              });
    return handleOf<::Component>(number);
}

OSErr unregisterOne(::Component handle)
{
    Registry& all = registry();
    Table::Use closing = all.table.use(numberOf(handle));
    if (!closing) return invalidComponentID;
    long open = 0;
    if (!closing->instances.compare_exchange_strong(open, unregistered))
        return open == unregistered ? invalidComponentID : validInstancesExist;
    {
        const std::lock_guard<std::mutex> guard(all.lock);
        all.order.erase(std::remove(all.order.begin(), all.order.end(), numberOf(handle)), all.order.end());
    }
    all.table.endClose(std::move(closing));
    return noErr;
}

long countRegisteredInstances(::Component handle)
{
    const Table::Use component = registry().table.use(numberOf(handle));
    return component ? std::max(component->instances.load(), 0L) : 0;
}

long refcon(::Component handle)
{
    long word = 0;
    withComponent(handle, [&word](Registered& component) { word = component.refcon; });
    return word;
}

void setRefcon(::Component handle, long word)
{
    withComponent(handle, [word](Registered& component) { component.refcon = word; });
}

Handle storage(ComponentInstance handle)
{
    const Instances::Use instance = use(handle);
    const State* const state = stateOf(instance);
    return state ? state->storage.load() : nullptr;
}

void setStorage(ComponentInstance handle, Handle word)
{
    const Instances::Use instance = use(handle);
    if (State* const state = stateOf(instance)) state->storage = word;
}

} // namespace kvxplatform::components
