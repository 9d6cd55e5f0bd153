#include "hostcalls/Objects.h"

#include "hostcalls/Cab.h"
#include "hostcalls/HostTables.h"

CosObj RootOf(PDDoc document)
{
    return HostCall(HOST_SLOT(Cos, CosDocGetRoot), HostCall(HOST_SLOT(PDModel, PDDocGetCosDoc), document));
}

bool IsDictionary(CosObj object) { return HostCall(HOST_SLOT(Cos, CosObjGetType), object) == CosDict; }

CosObj EntryOf(CosObj dictionary, const std::string& key)
{
    return HostCall(HOST_SLOT(Cos, CosDictGet), dictionary, Atom(key));
}

bool HasEntry(CosObj dictionary, const std::string& key)
{
    return IsDictionary(dictionary) && HostCall(HOST_SLOT(Cos, CosObjGetType), EntryOf(dictionary, key)) != CosNull;
}
