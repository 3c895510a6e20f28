// AUPlayerKVX as the host sees it.
#include "plugin/class_table.h"
#include "plugin/classes.h"

namespace auplayer {
namespace {

constexpr Word declaredDataSize = 184; // bytes of class data that the host sets aside for each object

} // namespace
} // namespace auplayer

REALclassDefinition auPlayerClass = table::classDefinition("AUPlayerKVX", auplayer::declaredDataSize, {}, {});
