// Identification values of this build, shared by the identification
// functions, the version-stamp block and the Windows version resource.
// CMakeLists.txt carries the same version as the project version and a test
// keeps all of them in step.
#ifndef KORUTL_UTL_VERSION_H
#define KORUTL_UTL_VERSION_H

#define KORUTL_LIB_NAME "Halcyra Utility Library"
#define KORUTL_VERSION_TEXT "2.2.1"
#define KORUTL_PATCH_LEVEL 3
#define KORUTL_RELEASE 8

#define KORUTL_STRINGIFY_(x) #x
#define KORUTL_STRINGIFY(x) KORUTL_STRINGIFY_(x)
// The full version, "2.2.1.3": the version, a dot and the patch level.
#define KORUTL_FULL_VERSION_TEXT KORUTL_VERSION_TEXT "." KORUTL_STRINGIFY(KORUTL_PATCH_LEVEL)
#define KORUTL_FILE_OS 2
#define KORUTL_FILE_TYPE 2
#define KORUTL_FILE_NAME "korutl.dll"

#define KORUTL_MAKER_NAME "Vantrel"
#define KORUTL_PRODUCT_NAME "Halcyra"
#define KORUTL_PLATFORM_TEXT "HLC for Windows95,98,NT and 2000"
#define KORUTL_LEGAL_NOTICE "Copyright (C) Vantrel. All rights reserved."
#define KORUTL_FURTHER_VERSION "1"

#endif
