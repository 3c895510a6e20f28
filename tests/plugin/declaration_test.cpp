// Method declarations compared with C++ functions at compile time.
#include "plugin/declaration.h"

namespace {

using table::declares;
using Integer = HostInteger;
using Boolean = HostBoolean;
using Block = REALmemoryBlockStruct*;
using String = REALstringStruct*;
using Folder = REALfolderItemStruct*;
template <class T>
using Array = ArrayOf<T>*;

// ---- declarations that fit their functions ----

static_assert(declares<void>("Stop"));
static_assert(declares<void>("Stop()"));
static_assert(declares<Integer>("FreeSpace as integer"));
static_assert(declares<Integer>("FreeSpace() as integer"));
static_assert(declares<Integer>("FreeSpace As Integer"), "case does not matter");
static_assert(declares<Boolean>("Start as boolean"));
static_assert(declares<float>("Rate as single"));
static_assert(declares<double>("Time as double"));
static_assert(declares<std::uint32_t>("Code as uint32"));
static_assert(declares<std::uint64_t>("Clock as uint64"));
static_assert(declares<String>("Name as string"));
static_assert(declares<Block>("Data as memoryblock"));
static_assert(declares<void, Integer>("Seek(position as integer)"));
static_assert(declares<void, Integer>("Seek(position as integer=0)"), "with a default");
static_assert(declares<void, Integer>("Seek(position as integer = 0)"), "spaces around the default");
static_assert(declares<void, Integer>("Seek(asset as integer)"), "a name that starts with \"as\"");
static_assert(declares<Boolean, Block, Integer, Integer>(
    "Add(Data as memoryblock, offset as integer=0, count as integer=0) as boolean"));
static_assert(declares<void, float, double, Boolean>("Set(a as single,b as double,c as boolean)"),
              "no spaces");
static_assert(declares<void, Integer*>("Get(byref value as integer)"));
static_assert(declares<void, Integer*>("Get(ByRef value As Integer)"));
static_assert(declares<Integer, String, Boolean*>("Get(name as string, byref found as boolean) as integer"));

static_assert(declares<Boolean, Folder>("Open(file as folderitem) as boolean"));
static_assert(declares<void, Array<double>>("Fill(values() as double)"),
              "() after the name declares an array");
static_assert(declares<void, Array<float>>("Fill(values() as single)"));
static_assert(declares<void, Array<Integer>>("Fill(Values() As Integer)"));
static_assert(declares<void, Array<Integer>, Integer>("Fill(values() as Integer, count as Integer = 2)"));
static_assert(declares<void, Integer, Array<Integer>>("Fill(count as Integer, values() as Integer)"));
static_assert(declares<Array<Integer>>("Map as Integer()"), "() after the type of a result");
static_assert(declares<Array<double>>("Map() as double()"), "with an empty parameter list");
static_assert(declares<Array<Integer>, Array<Integer>>("Map(values() as Integer) as Integer()"));
static_assert(declares<double, std::uint32_t>("Volume(index as UInt32) as double"), "an indexed property");

// ---- declarations that do not fit ----

static_assert(!declares<void, Array<double>>("Fill(values as double)"), "declared without ()");
static_assert(!declares<void, double>("Fill(values() as double)"), "declared as an array");
static_assert(!declares<void, Array<float>>("Fill(values() as double)"), "another element type");
static_assert(!declares<void, Array<double>>("Fill(values() as single)"), "another element type");
static_assert(!declares<void, Array<Integer>>("Fill(byref values() as Integer)"), "an array is not ByRef");
static_assert(!declares<Array<Integer>>("Map as Integer"), "the result is not declared as an array");
static_assert(!declares<Integer>("Map as Integer()"), "the result is declared as an array");
static_assert(!declares<Array<float>>("Map as Integer()"), "another element type");
static_assert(!declares<Array<Integer>>("Map as Integer("), "an unbalanced bracket");
static_assert(!declares<Array<Integer>>("Map as Integer)"), "an unbalanced bracket");
static_assert(!declares<void, Array<Integer>>("Fill(values( as Integer)"), "an unbalanced bracket");
static_assert(!declares<void, Array<Integer>>("Fill(values() as Integer"), "an unbalanced bracket");
static_assert(!declares<Boolean, Block>("Open(file as folderitem) as boolean"), "another object type");
static_assert(!declares<double, std::uint32_t>("Volume(index as Integer) as double"), "another index type");

static_assert(!declares<Integer>("Stop"), "the result is missing");
static_assert(!declares<void>("FreeSpace as integer"), "an extra result");
static_assert(!declares<Boolean>("FreeSpace as integer"), "another result type");
static_assert(!declares<float>("Rate as double"), "a narrower result");
static_assert(!declares<std::uint32_t>("FreeSpace as integer"), "a result of another sign");
static_assert(!declares<void, Integer>("Stop"), "the parameter is missing");
static_assert(!declares<void, Integer>("Stop()"), "the parameter is missing");
static_assert(!declares<void>("Seek(position as integer)"), "an extra parameter");
static_assert(!declares<void, Integer>("Seek(a as integer, b as integer)"), "an extra parameter");
static_assert(!declares<void, Integer, Integer>("Seek(a as integer)"), "a missing parameter");
static_assert(!declares<void, Integer>("Seek(position as double)"), "another type");
static_assert(!declares<void, Integer, Boolean>("Seek(a as boolean, b as integer)"), "swapped parameters");
static_assert(!declares<void, Integer>("Seek(position as integers)"), "a longer type name");
static_assert(!declares<void, Integer>("Seek(position as int)"), "a shorter type name");
static_assert(!declares<void, Integer>("Seek(position)"), "the type is missing");
static_assert(!declares<void, Integer>("Seek(byref position as integer)"), "declared ByRef");
static_assert(!declares<void, Integer*>("Get(value as integer)"), "not declared ByRef");
static_assert(!declares<void, Boolean*>("Get(byref value as integer)"), "another ByRef type");
static_assert(!declares<Integer, Integer>("Seek(position as integer)"), "the result is missing");
static_assert(!declares<void, Integer>("Seek(position as integer,)"), "an empty parameter");
static_assert(!declares<void, Integer>("Seek(,position as integer)"), "an empty parameter");
static_assert(!declares<void, Integer, Integer>("Seek(a as integer,,b as integer)"), "an empty parameter");
static_assert(!declares<void>("Stop(,)"), "two empty parameters");
static_assert(!declares<Integer>("Seek(position as integer"), "an unbalanced bracket");
static_assert(!declares<Integer>("Seek position) as integer"), "an unbalanced bracket");
static_assert(!declares<void>("Stop)("), "an unbalanced bracket");
static_assert(!declares<void>("Stop("), "an unbalanced bracket");

} // namespace
