// The sound output component's dispatcher: every request to the component arrives here.
#include "plugin/classes.h"

#include <Carbon/Carbon.h>

struct ComponentParameters; // the request, which nothing here looks into

namespace soundstream {
namespace {

/// Answer one request. The component knows no selector, and says so as the Component Manager asks.
ComponentResult QTSoundStreamDispatch(ComponentParameters*, Handle /*storage*/)
{
    return badComponentSelector;
}

} // namespace
} // namespace soundstream

const AnyFunction soundStreamDispatcher = reinterpret_cast<AnyFunction>(soundstream::QTSoundStreamDispatch);
