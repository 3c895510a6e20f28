#include "platform/corefoundation/object.h"

#include "platform/support/misuse.h"

using namespace kvxplatform;

namespace kvxplatform::corefoundation {

Object::Object(Kind& ofKind) : kind(ofKind) { kind.liveCount.add(); }

Object::~Object() { kind.liveCount.remove(); }

namespace {

// Callers hold pointers to const. The cast is safe because the reference count is not part of the value.
Object& objectOf(CFTypeRef cf, const char* message)
{
    if (!cf) endForMisuse(message);
    return *static_cast<Object*>(const_cast<void*>(cf));
}

} // namespace
} // namespace kvxplatform::corefoundation

using corefoundation::objectOf;

CFTypeRef CFRetain(CFTypeRef cf)
{
    objectOf(cf, "CFRetain was given NULL").references.fetch_add(1, std::memory_order_relaxed);
    return cf;
}

void CFRelease(CFTypeRef cf)
{
    corefoundation::Object& object = objectOf(cf, "CFRelease was given NULL");
    if (object.references.fetch_sub(1, std::memory_order_acq_rel) == 1) object.kind.destroy(&object);
}

CFIndex CFGetRetainCount(CFTypeRef cf)
{
    return objectOf(cf, "CFGetRetainCount was given NULL").references.load(std::memory_order_relaxed);
}
