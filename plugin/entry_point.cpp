// The library's only exported function, which reads the host's version and registers the classes.
#include "plugin/classes.h"
#include "plugin/exception_border.h"
#include "plugin/process_state.h"
#include "plugin/register_class.h"
#include "plugin/services.h"

REALResolver gResolver = nullptr;
double rbversion_rbversion = 0.0;
int CurrentREALControlVersion = newestLayout;
AnyFunction soundComponentEntry = nullptr;

namespace {

struct {
    double hostVersion;
    int layout;
} const layouts[] = {
    // newest class-definition layout that hosts from each version on read; newest version first
    {2013.04, 13},
    {2013.03, 12},
    {2013.0, 11},
    {2012.0, 10},
};

int layoutFor(double hostVersion)
{
    for (const auto& row : layouts)
        if (hostVersion >= row.hostVersion) return row.layout;
    return oldestLayout; // layout of older hosts, and of a host whose version is NaN
}

REALclassDefinition* const classes[] = {
    &auPlayerClass, &coreAudioClass, &coreAudioListenerClass, &coreAudioPlayerClass, &soundStreamClass,
};

template <class Function>
Function* resolve(const char* name)
{
    return reinterpret_cast<Function*>(gResolver(name));
}

void enter(REALResolver resolver)
{
    gResolver = resolver;
    if (auto* hostVersion = resolve<double()>("REALGetRBVersion")) rbversion_rbversion = hostVersion();
    CurrentREALControlVersion = layoutFor(rbversion_rbversion);

    // All supported hosts have this service. A host without the service crashes at this call of a null
    // address, before the library registers a class.
    resolve<void(int)>("RegisterPluginVersion")(CurrentREALControlVersion);

    if (REALinRuntime()) soundComponentEntry = soundStreamDispatcher;
    for (REALclassDefinition* const definition : classes) MyREALRegisterClass(definition);
}

} // namespace

extern "C" __attribute__((visibility("default"))) void REALPluginMain(REALResolver resolver)
{
    catchingAll<enter>(resolver);
}
