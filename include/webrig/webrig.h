/*
 * webrig: the IIS configuration runtime of an installer.
 *
 * The installer engine loads webrig and drives it through these eight functions while a product
 * is installed, rolled back or removed. Every function but QMIISInitialize returns -1 until
 * QMIISInitialize has run; apart from that (and QMIISCheckForContinue's own -1) they return 0.
 *
 * webrig.dll (32-bit Windows): __stdcall, UTF-16 strings as LPCWSTR, undecorated names.
 * libwebrig.so (Linux): the C calling convention, UTF-16 strings as const char16_t*; the machine
 * configured is the simulated one in the folder named by the environment variable WEBRIG_MACHINE.
 *
 * A null string pointer is read as the empty string.
 */
#ifndef WEBRIG_WEBRIG_H
#define WEBRIG_WEBRIG_H

#include <stdint.h>

#if defined(_WIN32)
#define WEBRIG_CALL __stdcall
#define WEBRIG_API
typedef const wchar_t* webrig_text;
#else
#define WEBRIG_CALL
#define WEBRIG_API __attribute__((visibility("default")))
#ifdef __cplusplus
typedef const char16_t* webrig_text;
#else
typedef const uint16_t* webrig_text;
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Reads the settings file (its full path) and prepares the run; hostContext is handed back to the
 * host engine's functions. Replaces the state of an earlier call. Always 0. */
WEBRIG_API int32_t WEBRIG_CALL QMIISInitialize(webrig_text settingsFile, uint32_t hostContext);

/* Ends a run (restarts the web service when the settings ask for it). */
WEBRIG_API int32_t WEBRIG_CALL QMIISUninitialize(void);

/* Creates the IIS items of one component. `operations` designates the host's operation source:
 * on Windows a VARIANT* holding its IDispatch; on Linux a webrig::platform::IHostOperationSource*
 * (see src/platform/host_objects.h). */
WEBRIG_API int32_t WEBRIG_CALL QMIISComponentInstall(webrig_text component, void* operations);

/* Reads the installed IIS version and tells whether the component can be installed: -1 when it
 * has IIS items, IIS is missing or older than 4 and continueWithoutIIS is 0. */
WEBRIG_API int32_t WEBRIG_CALL QMIISCheckForContinue(webrig_text component,
                                                     int32_t continueWithoutIIS);

/* Remove an item that an install recorded with the host, by its recorded name. */
WEBRIG_API int32_t WEBRIG_CALL QMIISVRootUninstall(webrig_text name);
WEBRIG_API int32_t WEBRIG_CALL QMIISWebSiteUninstall(webrig_text name);
WEBRIG_API int32_t WEBRIG_CALL QMIISAppPoolUninstall(webrig_text name);
WEBRIG_API int32_t WEBRIG_CALL QMIISWebServiceExtensionUninstall(webrig_text name);

#ifdef __cplusplus
}
#endif

#endif /* WEBRIG_WEBRIG_H */
