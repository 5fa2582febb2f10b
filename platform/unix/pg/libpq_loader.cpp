#define KORUTL_LIBPQ_LOADER_ITSELF
#include "platform/unix/pg/libpq_loader.h"

#include <dlfcn.h>

#include <mutex>

namespace korutl::store::pg {

namespace {

Libpq table;
bool loaded = false;
std::string failure;

// dlsym hands out functions as object pointers; POSIX makes the cast safe.
template <typename Function>
bool find(void *library, Function &f, const char *name) {
  f = reinterpret_cast<Function>(dlsym(library, name));
  return f != nullptr;
}

void load() {
  // Debian's libpq5 package; RTLD_LOCAL keeps its names (and those of its
  // TLS libraries) out of the program's own lookups.
  void *library = dlopen("libpq.so.5", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    const char *why = dlerror();
    failure = std::string("a PostgreSQL store needs libpq (the libpq5 package): ") +
              (why != nullptr ? why : "libpq.so.5 not found");
    return;
  }
  Libpq &t = table;
  const bool all =
      find(library, t.connectdbParams, "PQconnectdbParams") &&
      find(library, t.status, "PQstatus") && find(library, t.socket, "PQsocket") &&
      find(library, t.finish, "PQfinish") && find(library, t.errorMessage, "PQerrorMessage") &&
      find(library, t.setNoticeProcessor, "PQsetNoticeProcessor") &&
      find(library, t.user, "PQuser") && find(library, t.exec, "PQexec") &&
      find(library, t.prepare, "PQprepare") && find(library, t.execPrepared, "PQexecPrepared") &&
      find(library, t.resultStatus, "PQresultStatus") &&
      find(library, t.resultErrorMessage, "PQresultErrorMessage") &&
      find(library, t.resultErrorField, "PQresultErrorField") &&
      find(library, t.ntuples, "PQntuples") && find(library, t.getvalue, "PQgetvalue") &&
      find(library, t.getisnull, "PQgetisnull") && find(library, t.getlength, "PQgetlength") &&
      find(library, t.clear, "PQclear") &&
      find(library, t.makeEmptyPGresult, "PQmakeEmptyPGresult") &&
      find(library, t.freemem, "PQfreemem") && find(library, t.conninfoParse, "PQconninfoParse") &&
      find(library, t.conninfoFree, "PQconninfoFree");
  if (!all) {
    failure = "libpq.so.5 lacks a function the PostgreSQL store needs";
    return;
  }
  loaded = true;  // the library stays loaded for the life of the process
}

}  // namespace

bool load_libpq(std::string &why) {
  static std::once_flag once;
  std::call_once(once, load);
  if (!loaded) why = failure;
  return loaded;
}

const Libpq &libpq() { return table; }

}  // namespace korutl::store::pg
