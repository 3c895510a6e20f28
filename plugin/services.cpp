#include "plugin/services.h"

LengthMethod hostLengthMethod()
{
    static LengthMethod method = nullptr;
    if (!method)
        method = reinterpret_cast<LengthMethod>(
            REALLoadFrameworkMethod(nullptr, "LenB( s as string ) as integer"));
    return method;
}

HostInteger hostLength(REALstringStruct* text)
{
    LengthMethod method = hostLengthMethod();
    return method ? method(text) : 0;
}
