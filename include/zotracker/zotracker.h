#pragma once

// The interface of ZoTracker.dll for C99, and the way to load it. What each operation does is
// written in ITracker.h: a ZoTracker is an ITracker, its table of calls the class's own.
#include "zotracker/Version.h"

#include <windows.h>

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

// UTF-16 text on its way into the module, borrowed for one call. Passed by value.
typedef struct ZoTrackerText
{
    const wchar_t* data; // need not be zero-terminated; may be null when `length` is 0
    size_t length;       // UTF-16 units
} ZoTrackerText;

typedef struct ZoTracker ZoTracker;

// What a tracker does, in binary-stable order. Each call takes the tracker itself first.
typedef struct ZoTrackerCalls
{
    uint32_t (*GetInterfaceVersion)(ZoTracker* tracker);
    bool (*IsTrackingEnabled)(ZoTracker* tracker);
    void (*SetTrackingEnabled)(ZoTracker* tracker, bool enable);
    void (*TrackPageview)(ZoTracker* tracker);
    void (*Initialize)(ZoTracker* tracker, const wchar_t* hostPath);
    void (*DisableIdlePageviews)(ZoTracker* tracker, bool disable);
    void (*SetContinueSession)(ZoTracker* tracker, bool continueSession);
    void (*TrackEvent)(ZoTracker* tracker, const wchar_t* category, const wchar_t* action,
                       const wchar_t* label, ZoTrackerText value, ZoTrackerText page);
    void (*TrackEventEx)(ZoTracker* tracker, ZoTrackerText category, ZoTrackerText action,
                         ZoTrackerText label, ZoTrackerText value, ZoTrackerText page,
                         bool onceOnly);
    void (*TrackMessage)(ZoTracker* tracker, ZoTrackerText text);
    void (*TrackPurchase)(ZoTracker* tracker, ZoTrackerText itemName, ZoTrackerText itemCode,
                          double unitPrice, ZoTrackerText orderId, int32_t quantity);
    void (*SetProductName)(ZoTracker* tracker, ZoTrackerText name);
} ZoTrackerCalls;

struct ZoTracker
{
    const ZoTrackerCalls* call; // tracker->call->TrackPageview(tracker)
};

// Zero-terminated text as an argument; null is empty.
static inline ZoTrackerText ZoTrackerMakeText(const wchar_t* text)
{
    ZoTrackerText made = {text, 0};
    while (text != NULL && text[made.length] != L'\0')
        ++made.length;
    return made;
}

// The module's exports, for a host that links its import library. Exports.h says what they do.
#ifndef __cplusplus
ZoTracker* GetTrackerInstance(void);
void DestroyTrackerInstance(void);
ZoTracker* GetKPITrackerInstance(void);
void DestroyKPITrackerInstance(void);
#endif

typedef enum ZoTrackerKind
{
    ZoTrackerMain, // the main tracker
    ZoTrackerKpi   // the tracker of key performance indicators
} ZoTrackerKind;

// What a tracker is told before its first hit.
typedef struct ZoTrackerOptions
{
    bool continueSession;      // go on with the stored session instead of a new one
    bool disableIdlePageviews; // no pageviews to keep an idle session alive
} ZoTrackerOptions;

// A tracker of the loaded module and what gives it back.
typedef struct ZoTrackerHandle
{
    ZoTracker* tracker; // null: the module is missing, or it has another interface
    HMODULE module;
    void (*destroy)(void);
} ZoTrackerHandle;

// The full path of the process's executable in a block of the process's heap, with room for
// `moreUnits` behind it. Null when memory runs out.
static inline wchar_t* ZoTrackerMakeHostPath(size_t moreUnits)
{
    const DWORD room = 32768; // more than any path has
    wchar_t* const path =
        (wchar_t*)HeapAlloc(GetProcessHeap(), 0, (room + moreUnits) * sizeof(wchar_t));
    if (path != NULL)
        path[GetModuleFileNameW(NULL, path, room - 1)] = L'\0';
    return path;
}

// Loads ZoTracker.dll from the folder of the process's executable and from nowhere else; what the
// module imports comes from the system's folder. Null when it cannot be loaded.
static inline HMODULE ZoTrackerLoadModule(void)
{
    static const wchar_t name[] = L"ZoTracker.dll";
    HMODULE module = NULL;
    wchar_t* const path = ZoTrackerMakeHostPath(sizeof(name) / sizeof(*name));
    size_t length = ZoTrackerMakeText(path).length;
    while (length > 0 && path[length - 1] != L'\\')
        --length;
    if (length > 0)
    {
        lstrcpyW(path + length, name);
        module = LoadLibraryExW(path, NULL, LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (module == NULL && GetLastError() == ERROR_INVALID_PARAMETER) // Windows 7 as it came
            module = LoadLibraryExW(path, NULL, LOAD_WITH_ALTERED_SEARCH_PATH);
    }
    HeapFree(GetProcessHeap(), 0, path);
    return module;
}

// Gives the tracker back and unloads the module. Waits for the last hits as the module's releases
// do. Does nothing with a handle that is closed already.
static inline void ZoTrackerClose(ZoTrackerHandle* handle)
{
    if (handle->tracker != NULL)
        handle->destroy();
    if (handle->module != NULL)
        FreeLibrary(handle->module);
    handle->tracker = NULL;
    handle->module = NULL;
}

// Gets a tracker of the module, if its interface is the one of this header.
static inline void ZoTrackerGet(ZoTrackerHandle* handle, const char* get, const char* destroy)
{
    typedef ZoTracker* (*Get)(void);
    const Get getTracker = (Get)(void (*)(void))GetProcAddress(handle->module, get);
    handle->destroy = (void (*)(void))GetProcAddress(handle->module, destroy);
    if (getTracker == NULL || handle->destroy == NULL)
        return;
    handle->tracker = getTracker();
    if (handle->tracker != NULL &&
        handle->tracker->call->GetInterfaceVersion(handle->tracker) != ZOTRACKER_INTERFACE_VERSION)
    {
        handle->destroy();
        handle->tracker = NULL;
    }
}

// Applies the options and reads the configuration beside the process's executable.
static inline void ZoTrackerStart(ZoTracker* tracker, ZoTrackerOptions options)
{
    wchar_t* const hostPath = ZoTrackerMakeHostPath(0);
    tracker->call->SetContinueSession(tracker, options.continueSession);
    tracker->call->DisableIdlePageviews(tracker, options.disableIdlePageviews);
    if (hostPath != NULL)
        tracker->call->Initialize(tracker, hostPath);
    HeapFree(GetProcessHeap(), 0, hostPath);
}

// Loads the module and starts one of its trackers: ready for Track... calls. Once for each kind in
// a process's life; ZoTrackerClose it before the process ends, outside of DllMain.
static inline ZoTrackerHandle ZoTrackerOpen(ZoTrackerKind kind, ZoTrackerOptions options)
{
    ZoTrackerHandle handle = {NULL, NULL, NULL};
    handle.module = ZoTrackerLoadModule();
    if (handle.module != NULL && kind == ZoTrackerMain)
        ZoTrackerGet(&handle, "GetTrackerInstance", "DestroyTrackerInstance");
    else if (handle.module != NULL)
        ZoTrackerGet(&handle, "GetKPITrackerInstance", "DestroyKPITrackerInstance");
    if (handle.tracker != NULL)
        ZoTrackerStart(handle.tracker, options);
    else
        ZoTrackerClose(&handle);
    return handle;
}
