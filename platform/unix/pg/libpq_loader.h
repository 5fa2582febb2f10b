// libpq, loaded when a process first reaches a server store. Most programs
// keep their tree in a file and never need it; linked in, libpq and its
// TLS and Kerberos libraries cost every one of them milliseconds at load.
// The server store's files include this header in place of <libpq-fe.h>
// and call libpq by its own names, which lead to the loaded functions.
#ifndef KORUTL_PLATFORM_UNIX_PG_LIBPQ_LOADER_H
#define KORUTL_PLATFORM_UNIX_PG_LIBPQ_LOADER_H

#include <libpq-fe.h>

#include <string>

namespace korutl::store::pg {

// The libpq functions the server store calls.
struct Libpq {
  decltype(&::PQconnectdbParams) connectdbParams;
  decltype(&::PQstatus) status;
  decltype(&::PQsocket) socket;
  decltype(&::PQfinish) finish;
  decltype(&::PQerrorMessage) errorMessage;
  decltype(&::PQsetNoticeProcessor) setNoticeProcessor;
  decltype(&::PQuser) user;
  decltype(&::PQexec) exec;
  decltype(&::PQprepare) prepare;
  decltype(&::PQexecPrepared) execPrepared;
  decltype(&::PQresultStatus) resultStatus;
  decltype(&::PQresultErrorMessage) resultErrorMessage;
  decltype(&::PQresultErrorField) resultErrorField;
  decltype(&::PQntuples) ntuples;
  decltype(&::PQgetvalue) getvalue;
  decltype(&::PQgetisnull) getisnull;
  decltype(&::PQgetlength) getlength;
  decltype(&::PQclear) clear;
  decltype(&::PQmakeEmptyPGresult) makeEmptyPGresult;
  decltype(&::PQfreemem) freemem;
  decltype(&::PQconninfoParse) conninfoParse;
  decltype(&::PQconninfoFree) conninfoFree;
};

// Loads libpq.so.5 the first time (once per process). False, with the
// reason, when it cannot be loaded or lacks one of the functions; the
// server store then fails each call with a store error saying so.
bool load_libpq(std::string &why);

// The loaded functions: only after load_libpq succeeded (a connection
// exists only then, and every other call needs one).
const Libpq &libpq();

}  // namespace korutl::store::pg

// libpq's names lead to the loaded functions, except in the loader itself,
// which looks them up by name.
#ifndef KORUTL_LIBPQ_LOADER_ITSELF
#define PQconnectdbParams (::korutl::store::pg::libpq().connectdbParams)
#define PQstatus (::korutl::store::pg::libpq().status)
#define PQsocket (::korutl::store::pg::libpq().socket)
#define PQfinish (::korutl::store::pg::libpq().finish)
#define PQerrorMessage (::korutl::store::pg::libpq().errorMessage)
#define PQsetNoticeProcessor (::korutl::store::pg::libpq().setNoticeProcessor)
#define PQuser (::korutl::store::pg::libpq().user)
#define PQexec (::korutl::store::pg::libpq().exec)
#define PQprepare (::korutl::store::pg::libpq().prepare)
#define PQexecPrepared (::korutl::store::pg::libpq().execPrepared)
#define PQresultStatus (::korutl::store::pg::libpq().resultStatus)
#define PQresultErrorMessage (::korutl::store::pg::libpq().resultErrorMessage)
#define PQresultErrorField (::korutl::store::pg::libpq().resultErrorField)
#define PQntuples (::korutl::store::pg::libpq().ntuples)
#define PQgetvalue (::korutl::store::pg::libpq().getvalue)
#define PQgetisnull (::korutl::store::pg::libpq().getisnull)
#define PQgetlength (::korutl::store::pg::libpq().getlength)
#define PQclear (::korutl::store::pg::libpq().clear)
#define PQmakeEmptyPGresult (::korutl::store::pg::libpq().makeEmptyPGresult)
#define PQfreemem (::korutl::store::pg::libpq().freemem)
#define PQconninfoParse (::korutl::store::pg::libpq().conninfoParse)
#define PQconninfoFree (::korutl::store::pg::libpq().conninfoFree)
#endif

#endif
