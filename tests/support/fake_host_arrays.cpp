// The fake host's services for memory blocks and arrays.
#include "tests/support/fake_host_services.h"

namespace fake {

struct ArrayServices : Services {
    static REALmemoryBlockStruct* newMemoryBlock(HostInteger size)
    {
        Call call = note("newMemoryBlock", std::to_string(size));
        REALmemoryBlockStruct* block = nullptr;
        if (begin(call) && size >= 0 && size <= host().largestBlock)
            block = host().newMemoryBlock(std::string(static_cast<std::size_t>(size), '\0'));
        call.answer(shown(block));
        return block;
    }
    static void* getPtr(REALmemoryBlockStruct* block)
    {
        Call call = note("memoryBlockGetPtr", shown(block));
        const Host::Value* found = begin(call) ? known(block, "m", "memoryBlockGetPtr") : nullptr;
        return found && found->hasMemory && host().blocksHaveBytes ? found->storage.get() : nullptr;
    }
    static HostInteger getSize(REALmemoryBlockStruct* block)
    {
        Call call = note("memoryBlockGetSize", shown(block));
        const Host::Value* found = begin(call) ? known(block, "m", "memoryBlockGetSize") : nullptr;
        return found ? found->claimedSize.value_or(static_cast<HostInteger>(found->bytes.size())) : 0;
    }

    static REALarrayStruct* createArray(HostInteger type, HostInteger upperBound)
    {
        Call call = note("RuntimeArrayCreateSingleDimBoundedArray",
                         std::to_string(type) + ", " + std::to_string(upperBound));
        REALarrayStruct* array = nullptr;
        if (begin(call) && type == 0)
            array = host().newIntegers(std::vector<HostInteger>(static_cast<std::size_t>(upperBound + 1)));
        call.answer(shown(array));
        return array;
    }
    static HostInteger uBound(REALarrayStruct* array)
    {
        Call call = note("RuntimeUBound", shown(array));
        const Host::Value* found = begin(call) ? known(array, "a", "RuntimeUBound") : nullptr;
        const HostInteger upperBound = found ? found->upperBound : 0;
        call.answer(std::to_string(upperBound));
        return upperBound;
    }

    template <class T>
    static T element(REALarrayStruct* array, HostInteger index)
    {
        Call call = note("get", shown(array) + ", " + std::to_string(index));
        const Host::Value* found = begin(call) ? known(array, "a", "get") : nullptr;
        T value = {};
        if (!found) return value;
        const std::size_t at = static_cast<std::size_t>(index) * sizeof(T);
        if (index < 0 || found->elementSize != sizeof(T) || at + sizeof(T) > found->elements.size())
            host().fault("get outside " + found->name);
        else
            std::memcpy(&value, found->elements.data() + at, sizeof(T));
        return value;
    }
    template <class T>
    using Get = T (*)(REALarrayStruct*, HostInteger);
    template <class T>
    static Get<T> handOut(const char* service, REALarrayStruct* array)
    {
        Call call = note(service, shown(array));
        return begin(call) && known(array, "a", service) ? &element<T> : nullptr;
    }
    static Get<HostInteger> integerGet(REALarrayStruct* a)
    {
        return handOut<HostInteger>("PluginIntegerArrayGetProc", a);
    }
    static Get<float> singleGet(REALarrayStruct* a) { return handOut<float>("PluginSingleArrayGetProc", a); }
    static Get<double> doubleGet(REALarrayStruct* a)
    {
        return handOut<double>("PluginDoubleArrayGetProc", a);
    }
    template <class T>
    static Get<T> directGet(REALarrayStruct* a)
    {
        return handOut<T>("RuntimeArrayDirectGetGetProc", a);
    }

    static void insert(REALarrayStruct* array, HostInteger index, HostInteger value)
    {
        Call call =
            note("insert", shown(array) + ", " + std::to_string(index) + ", " + std::to_string(value));
        Host::Value* found = begin(call) ? known(array, "a", "insert") : nullptr;
        if (!found) return;
        if (index < 0 || index > found->upperBound + 1) {
            host().fault("insert outside " + found->name);
            return;
        }
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        found->elements.insert(found->elements.begin() + index * static_cast<HostInteger>(sizeof value),
                               bytes, bytes + sizeof value);
        ++found->upperBound;
        if (!host().hasOpaqueRecords()) found->array.elements = found->elements.data();
    }
    using Insert = void (*)(REALarrayStruct*, HostInteger, HostInteger);
    template <int which>
    static Insert insertProc(REALarrayStruct* array)
    {
        const char* name = which == 0 ? "PluginIntegerArrayInsertProc" : "RuntimeArrayDirectGetInsertProc";
        Call call = note(name, shown(array));
        return begin(call) && known(array, "a", name) ? &insert : nullptr;
    }

    static AnyFunction find(const std::string& name)
    {
        // clang-format off
        static const std::map<std::string, AnyFunction> names = {
            {"newMemoryBlock",                          row(&newMemoryBlock)},
            {"memoryBlockGetPtr",                       row(&getPtr)},
            {"memoryBlockGetSize",                      row(&getSize)},
            {"RuntimeArrayCreateSingleDimBoundedArray", row(&createArray)},
            {"RuntimeUBound",                           row(&uBound)},
            {"PluginIntegerArrayInsertProc",            row(&insertProc<0>)},
            {"RuntimeArrayDirectGetInsertProc",         row(&insertProc<1>)},
            {"PluginIntegerArrayGetProc",               row(&integerGet)},
            {"PluginSingleArrayGetProc",                row(&singleGet)},
            {"PluginDoubleArrayGetProc",                row(&doubleGet)},
        };
        // clang-format on
        if (name == "RuntimeArrayDirectGetGetProc") switch (host().directGet) {
            case ElementType::integer:
                return row(&directGet<HostInteger>);
            case ElementType::single:
                return row(&directGet<float>);
            case ElementType::doubleFloat:
                return row(&directGet<double>);
            }
        const auto found = names.find(name);
        return found == names.end() ? nullptr : found->second;
    }
};

AnyFunction findArrayService(const std::string& name) { return ArrayServices::find(name); }

} // namespace fake
