#pragma once
// A read-only registry holding the one branch the library reads: the machine-wide ODBC data
// sources. The key HKEY_LOCAL_MACHINE\SOFTWARE\ODBC\ODBC.INI\<name> is the section [<name>] of
// the system odbc.ini that the ODBC driver manager (unixODBC) uses; each entry of the section is
// a value of the key. The calls keep the shape of the Windows functions they stand for: open a
// key, query a value's kind and size, query its data, close the key. See docs/datasource.md for
// how an entry's text becomes a value kind.
#include <cstdint>
#include <string>

namespace varsentix::registry {

// An open key. 0 is no key; the predefined roots are the Windows numbers.
using HKEY = std::uintptr_t;
inline constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002u;

// Access rights. Reading rights are granted; the rights to write (set a value, create a subkey or a
// link) are refused with ERROR_ACCESS_DENIED, the registry being read only.
inline constexpr uint32_t KEY_QUERY_VALUE = 0x0001;
inline constexpr uint32_t KEY_SET_VALUE = 0x0002;
inline constexpr uint32_t KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr uint32_t KEY_CREATE_LINK = 0x0020;

// Value kinds, numbered as Windows numbers them.
inline constexpr uint32_t REG_NONE = 0;
inline constexpr uint32_t REG_SZ = 1;         // text
inline constexpr uint32_t REG_EXPAND_SZ = 2;  // text with %VARIABLE% references
inline constexpr uint32_t REG_BINARY = 3;     // bytes
inline constexpr uint32_t REG_DWORD = 4;      // 32-bit number

// Results, numbered as Windows numbers them.
inline constexpr int32_t ERROR_SUCCESS = 0;
inline constexpr int32_t ERROR_FILE_NOT_FOUND = 2;   // no such key or value
inline constexpr int32_t ERROR_ACCESS_DENIED = 5;    // a right other than query asked for
inline constexpr int32_t ERROR_INVALID_HANDLE = 6;   // key not open (never opened or closed)
inline constexpr int32_t ERROR_INVALID_PARAMETER = 87;  // a required output missing
inline constexpr int32_t ERROR_MORE_DATA = 234;      // data buffer too small; size tells the need

// Opens subKey (backslash-separated, any letter case) below an open key or a root. On success
// *result is the new key; otherwise *result is 0. The values are read from the file when the key
// is opened and stay as they were while it is open.
int32_t RegOpenKeyExA(HKEY key, const std::string& subKey, uint32_t options, uint32_t samDesired,
                      HKEY* result);

// Reads the value valueName (any letter case) of an open key. type, when given, receives its
// kind. *dataSize gives the buffer's size in bytes and receives the value's size in bytes (text
// counts its terminating zero). With data null only kind and size are reported; with a buffer
// too small nothing is copied and ERROR_MORE_DATA comes back. dataSize may be null only when data
// is null.
int32_t RegQueryValueExA(HKEY key, const std::string& valueName, uint32_t* type, uint8_t* data,
                         uint32_t* dataSize);

// Closes a key opened by RegOpenKeyExA. Roots and unknown keys give ERROR_INVALID_HANDLE.
int32_t RegCloseKey(HKEY key);

// The file behind HKEY_LOCAL_MACHINE\SOFTWARE\ODBC\ODBC.INI: $ODBCSYSINI/odbc.ini when ODBCSYSINI
// is set, otherwise the system odbc.ini the installed unixODBC names (/etc/odbc.ini on Debian).
// The per-user file (~/.odbc.ini) is never read.
std::string systemOdbcIniPath();

}  // namespace varsentix::registry
