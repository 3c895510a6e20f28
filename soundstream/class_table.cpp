// QTSoundStreamKVX as the host sees it.
#include "plugin/class_table.h"
#include "plugin/classes.h"

namespace soundstream {
namespace {

constexpr Word declaredDataSize = 20; // bytes of class data that the host sets aside for each object

} // namespace
} // namespace soundstream

REALclassDefinition soundStreamClass =
    table::classDefinition("QTSoundStreamKVX", soundstream::declaredDataSize, {}, {});
