// Registry start-up: hands the library's trace function to the registry
// service and the OS-services library and starts code-page conversion,
// with the conversion objects' folder from the "Cpx_Objects_Path" setting.
#include <cstdio>

#include "korutl.h"
#include "readconfig/settings.h"
#include "siblings/cpx/cpx.h"
#include "siblings/oss/oss.h"
#include "siblings/rsv/rsv.h"

namespace {
constexpr const char *kModule = "readconfig/settings";
}  // namespace

extern "C" {

KORUTL_API int32_t KORVOInitRegistry(void) {
  char mode_name[2048];
  KORVOGetRegMode(mode_name);  // mode 1, the only one: the steps below
  rsv_set_trace_func(korutl::TraceToStderr, kModule, __LINE__);
  oss_set_trace_func(korutl::TraceToStderr, kModule, __LINE__);

  char objects_path[korutl::setting_buffer_size];
  KORVOGetSetting("Halcyra", "Global", "Cpx_Objects_Path", "", objects_path);
  int32_t started;
  if (objects_path[0] == '\0') {
    started = cpx_init();
  } else {
    // "CPXOBJDIR=" and a path of at most 1023 characters always fit.
    char setting[sizeof "CPXOBJDIR=" + korutl::setting_buffer_size];
    std::snprintf(setting, sizeof setting, "CPXOBJDIR=%s", objects_path);
    const char *const settings[] = {setting, nullptr};
    started = cpx_init_ex(settings);
  }
  if (started != CPX_OK) {
    cpx_term();
    return 0;
  }
  return 1;
}

}  // extern "C"
