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
    CurrentREALControlVersion = static_cast<int>(layoutOfHost(rbversion_rbversion));

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
