/* A host written in C: the server's header compiles as C, and a class object, an object and the
 * unload check work through the plain vtables. */
#include <string.h>

#include "varsentix/server/Server.h"

/* 0 when every step behaved; otherwise the number of the first step that did not. */
int varsentix_c_host_round_trip(const char* progId) {
  VX_CLSID clsid;
  VxClassFactory* factory = NULL;
  VxObject* object = NULL;
  if (DllCanUnloadNow() != VX_S_OK) return 1;
  if (VxCLSIDFromProgID(progId, &clsid) != VX_S_OK) return 2;
  if (DllGetClassObject(&clsid, &VX_IID_IClassFactory, (void**)&factory) != VX_S_OK) return 3;
  if (factory->lpVtbl->CreateInstance(factory, NULL, &VX_IID_IUnknown, (void**)&object) != VX_S_OK) return 4;
  factory->lpVtbl->Release(factory);
  if (strcmp(object->lpVtbl->GetProgID(object), progId) != 0) return 5;
  if (DllCanUnloadNow() != VX_S_FALSE) return 6;
  if (object->lpVtbl->Release(object) != 0) return 7;
  if (DllCanUnloadNow() != VX_S_OK) return 8;
  return 0;
}
