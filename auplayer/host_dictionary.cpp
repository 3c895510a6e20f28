#include "auplayer/host_dictionary.h"

#include "plugin/services.h"

namespace auplayer {

namespace {

// The methods of the dictionary that was used last, cached for all player objects. The host expects the
// plug-in to look up the two getters, too, although the plug-in never calls them.
REALobjectStruct* LastDictionary;
void (*LastDictionarySetter)(REALobjectStruct*, REALobjectStruct* key, REALobjectStruct* value);
REALobjectStruct* (*LastDictionaryGetter)(REALobjectStruct*, REALobjectStruct* key);
REALobjectStruct* (*LastDictionaryKeyGetter)(REALobjectStruct*, HostInteger index);

template <class Method>
void load(Method& method, REALobjectStruct* dictionary, const char* declaration)
{
    method = reinterpret_cast<Method>(REALLoadObjectMethod(dictionary, declaration));
}

void loadMethods(REALobjectStruct* dictionary)
{
    if (dictionary == LastDictionary) return;
    load(LastDictionarySetter, dictionary, "Value(key As Variant, Assigns _value As Variant)");
    load(LastDictionaryGetter, dictionary, "Value(key As Variant) As Variant");
    load(LastDictionaryKeyGetter, dictionary, "Key(index As Integer) As Variant");
    LastDictionary = dictionary;
}

} // namespace

void storeInDictionary(REALobjectStruct* dictionary, REALobjectStruct* key, REALobjectStruct* value)
{
    loadMethods(dictionary);
    if (LastDictionarySetter) LastDictionarySetter(dictionary, key, value);
}

void forgetDictionary() { LastDictionary = nullptr; }

} // namespace auplayer
