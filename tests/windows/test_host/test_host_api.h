#pragma once
// The test stand-in for the installer engine's module QMRT.DLL: the three host functions webrig
// looks up by name, an operation source object, and test-only exports that show what webrig
// asked of the host.
//
// The host's answers:
// - "__LoadString": "IDS_SITE" is "Shop Site", "IDS_LONG" is 300 'x' (more than the first
//   buffer of 260 holds); any other key fails (-1).
// - "TextSubSubstitute": replaces every "[INSTALLDIR]" with "C:\Shop\".
// - "_ComponentFileInfo": bit 0x40 for the component "Quiet", 0 for the others.
// Each call is journalled as one line (see TestHostJournal).

#include <stdint.h>
#include <windows.h>
// OLE Automation needs <windows.h> first.
#include <oleauto.h>

extern "C" {

// Forgets the journal.
typedef void(__stdcall* TestHostResetFunction)();
// The whole journal, one line per call: "__LoadString <context> <key> <capacity>",
// "TextSubSubstitute <context> <text>", "_ComponentFileInfo <context> <media> <feature>
// <component> <selector> <result before> <reserved>", "GetRecorder <type>",
// "Record <element 0>|<element 1>".
typedef BSTR(__stdcall* TestHostJournalFunction)();
// A new operation source in `operations` (VT_DISPATCH). Its recorder answers `recordResult`.
typedef HRESULT(__stdcall* TestHostCreateOperationsFunction)(VARIANT* operations,
                                                             HRESULT recordResult);
}
