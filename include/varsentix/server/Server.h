/* The in-process server of libvarsentix: class registration and class objects, the way an
 * in-process automation server offers them. Plain C, so that any host can load the library
 * (dlopen) and reach these entry points by name (dlsym).
 *
 *   DllRegisterServer    writes the four classes into the system-wide registration file
 *   DllInstall           registers (or removes) them in the per-user file when given "user"
 *   DllUnregisterServer  removes them again
 *   DllGetClassObject    hands out the class object (factory) of one class id
 *   DllCanUnloadNow      VX_S_OK when no object made through the server is alive
 *
 * The registration file and its format are described in docs/server.md. The environment
 * variable VARSENTIX_REGISTRY_FILE names a file that replaces both the system-wide and the
 * per-user file (tests use it). */
#ifndef VARSENTIX_SERVER_SERVER_H
#define VARSENTIX_SERVER_SERVER_H

#include <stdint.h>

#if defined(__GNUC__)
#define VARSENTIX_EXPORT __attribute__((visibility("default")))
#else
#define VARSENTIX_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes, with the values of their COM namesakes. */
typedef int32_t VX_HRESULT;
#define VX_S_OK ((VX_HRESULT)0)
#define VX_S_FALSE ((VX_HRESULT)1)
#define VX_E_NOINTERFACE ((VX_HRESULT)0x80004002)
#define VX_E_POINTER ((VX_HRESULT)0x80004003)
#define VX_E_FAIL ((VX_HRESULT)0x80004005)
#define VX_E_OUTOFMEMORY ((VX_HRESULT)0x8007000E)
#define VX_E_INVALIDARG ((VX_HRESULT)0x80070057)
#define VX_CLASS_E_NOAGGREGATION ((VX_HRESULT)0x80040110)
#define VX_CLASS_E_CLASSNOTAVAILABLE ((VX_HRESULT)0x80040111)
#define VX_REGDB_E_CLASSNOTREG ((VX_HRESULT)0x80040154)
#define VX_CO_E_CLASSSTRING ((VX_HRESULT)0x800401F3)
#define VX_SELFREG_E_CLASS ((VX_HRESULT)0x80040201)

/* A class or interface id: a GUID with the usual field layout. */
typedef struct VX_GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
} VX_GUID;
typedef VX_GUID VX_CLSID;
typedef VX_GUID VX_IID;

/* The four public classes. */
extern VARSENTIX_EXPORT const VX_CLSID VX_CLSID_Varsenti;     /* VarsentiX.Varsenti */
extern VARSENTIX_EXPORT const VX_CLSID VX_CLSID_clsDBManager; /* VarsentiX.clsDBManager */
extern VARSENTIX_EXPORT const VX_CLSID VX_CLSID_clsResultSet; /* VarsentiX.clsResultSet */
extern VARSENTIX_EXPORT const VX_CLSID VX_CLSID_clsData;      /* VarsentiX.clsData */

/* The interfaces the server hands out. */
extern VARSENTIX_EXPORT const VX_IID VX_IID_IUnknown;
extern VARSENTIX_EXPORT const VX_IID VX_IID_IClassFactory;
extern VARSENTIX_EXPORT const VX_IID VX_IID_IVarsentiXObject;

/* An object made by a class object. Every reference is given back with Release. */
typedef struct VxObject VxObject;
typedef struct VxObjectVtbl {
  VX_HRESULT (*QueryInterface)(VxObject* self, const VX_IID* riid, void** ppv);
  uint32_t (*AddRef)(VxObject* self);
  uint32_t (*Release)(VxObject* self);
  /* The ProgID of the object's class, e.g. "VarsentiX.Varsenti". Lives as long as the object. */
  const char* (*GetProgID)(VxObject* self);
  /* The object's class id. */
  VX_HRESULT (*GetClassID)(VxObject* self, VX_CLSID* clsid);
} VxObjectVtbl;
struct VxObject {
  const VxObjectVtbl* lpVtbl;
};

/* A class object (factory) of one class. */
typedef struct VxClassFactory VxClassFactory;
typedef struct VxClassFactoryVtbl {
  VX_HRESULT (*QueryInterface)(VxClassFactory* self, const VX_IID* riid, void** ppv);
  uint32_t (*AddRef)(VxClassFactory* self);
  uint32_t (*Release)(VxClassFactory* self);
  /* Makes a new object of the class. outer must be NULL (no aggregation); riid is
   * VX_IID_IUnknown or VX_IID_IVarsentiXObject; *ppv receives a VxObject*. */
  VX_HRESULT (*CreateInstance)(VxClassFactory* self, void* outer, const VX_IID* riid, void** ppv);
  /* Non-zero keeps the server loaded (DllCanUnloadNow answers VX_S_FALSE) until unlocked. */
  VX_HRESULT (*LockServer)(VxClassFactory* self, int32_t lock);
} VxClassFactoryVtbl;
struct VxClassFactory {
  const VxClassFactoryVtbl* lpVtbl;
};

/* Writes the classes into the registration file: VARSENTIX_REGISTRY_FILE when set, else the
 * system-wide /etc/varsentix/classes.ini. VX_SELFREG_E_CLASS when the file cannot be written. */
VARSENTIX_EXPORT VX_HRESULT DllRegisterServer(void);
/* Removes the classes from the same file. VX_S_OK also when they were not registered. */
VARSENTIX_EXPORT VX_HRESULT DllUnregisterServer(void);
/* install non-zero registers, zero unregisters. cmdLine "user" (any letter case) targets the
 * per-user file ($XDG_CONFIG_HOME or ~/.config, then varsentix/classes.ini); NULL or "" the
 * same file as DllRegisterServer. VARSENTIX_REGISTRY_FILE, when set, wins over both. */
VARSENTIX_EXPORT VX_HRESULT DllInstall(int32_t install, const char* cmdLine);
/* *ppv receives the class object of rclsid for riid (VX_IID_IClassFactory or VX_IID_IUnknown).
 * VX_CLASS_E_CLASSNOTAVAILABLE for a class id this library does not serve. */
VARSENTIX_EXPORT VX_HRESULT DllGetClassObject(const VX_CLSID* rclsid, const VX_IID* riid,
                                             void** ppv);
/* VX_S_OK when no object or class object made through the server is alive and the server is not
 * locked; VX_S_FALSE otherwise. */
VARSENTIX_EXPORT VX_HRESULT DllCanUnloadNow(void);

/* Looks a ProgID up in the registration files (VARSENTIX_REGISTRY_FILE when set; else the
 * per-user file, then the system-wide file). VX_REGDB_E_CLASSNOTREG when it is not there. */
VARSENTIX_EXPORT VX_HRESULT VxCLSIDFromProgID(const char* progId, VX_CLSID* clsid);
/* Reads "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" (braces required, either letter case).
 * VX_CO_E_CLASSSTRING for anything else. */
VARSENTIX_EXPORT VX_HRESULT VxCLSIDFromString(const char* text, VX_CLSID* clsid);
/* Writes the braced, upper-case text of a GUID into buffer (at least 39 bytes). */
VARSENTIX_EXPORT VX_HRESULT VxStringFromCLSID(const VX_CLSID* clsid, char* buffer,
                                             uint32_t bufferSize);

#ifdef __cplusplus
}
#endif

#endif /* VARSENTIX_SERVER_SERVER_H */
