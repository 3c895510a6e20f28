// Which declarations fit which functions: all of it is checked by the compiler.
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

// ---- declarations that fit ----

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
static_assert(declares<void, Integer>("Seek(position as integer = 0)"), "blanks around it");
static_assert(declares<void, Integer>("Seek(asset as integer)"), "a name that begins with the word");
static_assert(declares<Boolean, Block, Integer, Integer>(
    "Add(Data as memoryblock, offset as integer=0, count as integer=0) as boolean"));
static_assert(declares<void, float, double, Boolean>("Set(a as single,b as double,c as boolean)"),
              "no blanks");
static_assert(declares<void, Integer*>("Get(byref value as integer)"));
static_assert(declares<void, Integer*>("Get(ByRef value As Integer)"));
static_assert(declares<Integer, String, Boolean*>("Get(name as string, byref found as boolean) as integer"));

static_assert(declares<Boolean, Folder>("Open(file as folderitem) as boolean"));
static_assert(declares<void, Array<double>>("Fill(values() as double)"), "an array has its mark at its name");
static_assert(declares<void, Array<float>>("Fill(values() as single)"));
static_assert(declares<void, Array<Integer>>("Fill(Values() As Integer)"));
static_assert(declares<void, Array<Integer>, Integer>("Fill(values() as Integer, count as Integer = 2)"));
static_assert(declares<void, Integer, Array<Integer>>("Fill(count as Integer, values() as Integer)"));
static_assert(declares<Array<Integer>>("Map as Integer()"), "as a result, behind its type");
static_assert(declares<Array<double>>("Map() as double()"), "with a list, too");
static_assert(declares<Array<Integer>, Array<Integer>>("Map(values() as Integer) as Integer()"));
static_assert(declares<double, std::uint32_t>("Volume(index as UInt32) as double"), "with an index");

// ---- and those that do not ----

static_assert(!declares<void, Array<double>>("Fill(values as double)"), "no array");
static_assert(!declares<void, double>("Fill(values() as double)"), "an array");
static_assert(!declares<void, Array<float>>("Fill(values() as double)"), "an array of something else");
static_assert(!declares<void, Array<double>>("Fill(values() as single)"), "an array of something else");
static_assert(!declares<void, Array<Integer>>("Fill(byref values() as Integer)"), "an array is no reference");
static_assert(!declares<Array<Integer>>("Map as Integer"), "a result that is no array");
static_assert(!declares<Integer>("Map as Integer()"), "a result that is an array");
static_assert(!declares<Array<float>>("Map as Integer()"), "an array of something else");
static_assert(!declares<Array<Integer>>("Map as Integer("), "half a mark");
static_assert(!declares<Array<Integer>>("Map as Integer)"), "the other half");
static_assert(!declares<void, Array<Integer>>("Fill(values( as Integer)"), "half a mark");
static_assert(!declares<void, Array<Integer>>("Fill(values() as Integer"), "a list without an end");
static_assert(!declares<Boolean, Block>("Open(file as folderitem) as boolean"), "another kind of object");
static_assert(!declares<double, std::uint32_t>("Volume(index as Integer) as double"), "another index");

static_assert(!declares<Integer>("Stop"), "no result");
static_assert(!declares<void>("FreeSpace as integer"), "a result too many");
static_assert(!declares<Boolean>("FreeSpace as integer"), "another result");
static_assert(!declares<float>("Rate as double"), "nor a narrower one");
static_assert(!declares<std::uint32_t>("FreeSpace as integer"), "nor another sign");
static_assert(!declares<void, Integer>("Stop"), "no parameter");
static_assert(!declares<void, Integer>("Stop()"), "no parameter");
static_assert(!declares<void>("Seek(position as integer)"), "a parameter too many");
static_assert(!declares<void, Integer>("Seek(a as integer, b as integer)"), "a parameter too many");
static_assert(!declares<void, Integer, Integer>("Seek(a as integer)"), "a parameter too few");
static_assert(!declares<void, Integer>("Seek(position as double)"), "another type");
static_assert(!declares<void, Integer, Boolean>("Seek(a as boolean, b as integer)"), "swapped");
static_assert(!declares<void, Integer>("Seek(position as integers)"), "a longer name");
static_assert(!declares<void, Integer>("Seek(position as int)"), "a shorter name");
static_assert(!declares<void, Integer>("Seek(position)"), "no type");
static_assert(!declares<void, Integer>("Seek(byref position as integer)"), "not by reference");
static_assert(!declares<void, Integer*>("Get(value as integer)"), "by reference");
static_assert(!declares<void, Boolean*>("Get(byref value as integer)"), "another type by reference");
static_assert(!declares<Integer, Integer>("Seek(position as integer)"), "the parameter's type is no result");
static_assert(!declares<void, Integer>("Seek(position as integer,)"), "an empty parameter");
static_assert(!declares<void, Integer>("Seek(,position as integer)"), "an empty parameter");
static_assert(!declares<void, Integer, Integer>("Seek(a as integer,,b as integer)"), "an empty parameter");
static_assert(!declares<void>("Stop(,)"), "two empty parameters");
static_assert(!declares<Integer>("Seek(position as integer"), "a list without an end");
static_assert(!declares<Integer>("Seek position) as integer"), "a list without a start");
static_assert(!declares<void>("Stop)("), "a list inside out");
static_assert(!declares<void>("Stop("), "a list without an end");

} // namespace
