// Class tables that must not compile, with one mistake per case. KVX_CASE selects the case. Case 0 has no
// mistake and must compile.
#include "plugin/class_table.h"

using namespace table;

namespace {

struct Data {
    HostInteger level;
};
double getTime(REALobjectStruct*, HostInteger) { return 0; }
void setTime(REALobjectStruct*, HostInteger, double) {}
void stop(REALobjectStruct*) {}
HostInteger twice(HostInteger a) { return 2 * a; }

REALproperty properties[] = {KVX_PROPERTY("Time", asDouble, getTime, setTime)};
REALmethod methods[] = {KVX_METHOD(stop, "Stop")};
SharedMethod sharedMethods[] = {KVX_SHARED_METHOD(twice, "Twice(a as integer) as integer")};

#if KVX_CASE == 0
REALproperty row = KVX_FIELD("Level", asInteger, level, readWrite);
#elif KVX_CASE == 1 // the getter has another type than the type column
REALproperty row = KVX_PROPERTY("Time", asInteger, getTime, readOnly);
#elif KVX_CASE == 2 // getter and setter are swapped
REALproperty row = KVX_PROPERTY("Time", asDouble, setTime, getTime);
#elif KVX_CASE == 3 // a property with functions has `readWrite`, which is for fields
REALproperty row = KVX_PROPERTY("Time", asDouble, getTime, readWrite);
#elif KVX_CASE == 4 // the field has another type than the type column
REALproperty row = KVX_FIELD("Level", asDouble, level, readOnly);
#elif KVX_CASE == 5 // the field's setter has another type than the type column
REALproperty row = KVX_FIELD("Level", asInteger, level, setTime);
#elif KVX_CASE == 6 // the function differs from its declaration
REALmethod row = KVX_METHOD(stop, "Stop as boolean");
#elif KVX_CASE == 7 // the function of a method has no object parameter
REALmethod row = KVX_METHOD(twice, "Twice(a as integer) as integer");
#elif KVX_CASE == 8 // a shared method initialises the row of a method
REALmethod row = KVX_SHARED_METHOD(twice, "Twice(a as integer) as integer");
#elif KVX_CASE == 9 // a method initialises the row of a shared method
SharedMethod row = KVX_METHOD(stop, "Stop");
#endif

#if KVX_CASE == 10 // properties and methods are swapped
constexpr auto makeClass = [] { return classDefinition<Data, stop, nullptr>("A", {methods, properties}); };
#elif KVX_CASE == 11 // methods and shared methods are swapped
constexpr auto makeClass = [] {
    return classDefinition<Data, stop, nullptr>("A", {properties, sharedMethods, {}, methods});
};
#elif KVX_CASE == 12 // a getter is used as the constructor
constexpr auto makeClass = [] { return classDefinition<Data, getTime, nullptr>("A", {properties, methods}); };
#else
constexpr auto makeClass = [] {
    return classDefinition<Data, stop, nullptr>("A", {properties, methods, {}, sharedMethods});
};
#endif

} // namespace

const REALclassDefinition definition = makeClass();
