#pragma once

// ZO_VNOSAL_API marks what the library exports. ZO_VNOSAL_EXPORT is defined while the library
// itself is compiled, ZO_VNOSAL_STATIC by programs that link it statically; a host that links the
// import library defines neither. The names are the compiler's decorated ones, so such a host is
// built with the same compiler as the library.
#if !defined(_WIN32) || defined(ZO_VNOSAL_STATIC)
#define ZO_VNOSAL_API
#elif defined(ZO_VNOSAL_EXPORT)
#define ZO_VNOSAL_API __declspec(dllexport)
#else
#define ZO_VNOSAL_API __declspec(dllimport)
#endif
