#include "plugin/register_class.h"

#include "plugin/process_state.h"
#include "plugin/services.h"
#include "plugin/zeroed.h"

#include <cstring>

namespace {

// A structure of layout 9 consists of the first fields of the newest structure, so a copy of those bytes
// converts it.
template <class Older, class Current>
Older* olderRecords(const Current* records, Word count)
{
    if (!records || !count) return nullptr;
    static_assert(sizeof(Older) < sizeof(Current));
    auto older = allocateZeroed<Older>(static_cast<std::int64_t>(count));
    if (!older) return nullptr;
    for (Word i = 0; i < count; ++i) std::memcpy(&older[i], &records[i], sizeof(Older));
    return older.release(); // never freed, because the host uses the copies for the life of the process
}

// The host writes an event's key into the copy, so the static event receives the address of that copy.
REALevent9* olderEvents(REALevent* events, Word count)
{
    REALevent9* older = olderRecords<REALevent9>(events, count);
    for (Word i = 0; older && i < count; ++i) events[i].systemUse = reinterpret_cast<Word>(&older[i]);
    return older;
}

REALclassDefinition9 olderDefinition(REALclassDefinition& current)
{
    REALclassDefinition9 older = current;
    older.version = static_cast<Word>(CurrentREALControlVersion);
    older.unused[0] = older.unused[1] = 0;
    older.properties = FixProperties(static_cast<REALproperty*>(current.properties), current.propertyCount);
    older.methods = olderRecords<REALmethod9>(static_cast<REALmethod*>(current.methods), current.methodCount);
    older.events = olderEvents(static_cast<REALevent*>(current.events), current.eventCount);
    older.constants =
        olderRecords<REALconstant9>(static_cast<REALconstant*>(current.constants), current.constantCount);
    older.sharedProperties =
        FixProperties(static_cast<REALproperty*>(current.sharedProperties), current.sharedPropertyCount);
    older.sharedMethods =
        olderRecords<REALmethod9>(static_cast<REALmethod*>(current.sharedMethods), current.sharedMethodCount);
    return older;
}

} // namespace

REALproperty9* FixProperties(const REALproperty* properties, Word count)
{
    return olderRecords<REALproperty9>(properties, count);
}

void MyREALRegisterClass(REALclassDefinition* definition)
{
    definition->dataSize = (definition->dataSize + 15) / 16 * 16;
    if (CurrentREALControlVersion > oldestLayout)
        definition->version = static_cast<Word>(CurrentREALControlVersion);
    else
        static_cast<REALclassDefinition9&>(*definition) = olderDefinition(*definition);
    REALRegisterClass(definition);
}
