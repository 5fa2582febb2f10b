// The library loads only beside sibling libraries of the interface
// generation it was built for: it references each sibling's version symbol,
// so the dynamic linker refuses a sibling that lacks it.
#include "siblings/oss/oss.h"
#include "siblings/rsv/rsv.h"
#include "siblings/shm/shm.h"

namespace {
[[gnu::used]] const void *const sibling_versions[] = {&RSV_V113, &SHM_V22, &OSS_V19};
}  // namespace
