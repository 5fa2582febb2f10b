// The store's tables on a PostgreSQL server, in the schema "korvo". One
// database holds the trees of many hosts: every key and value row names
// its host, and the foreign keys include the host, so that no row can
// hang below another host's key (the row-level security of
// fleet_roles.sql relies on that).
//
// Names are kept as bytea, as they were given, so that every byte the
// SQLite store takes is kept whatever the database's encoding; beside
// each name its ASCII lower-cased form ("folded") gives the identity
// (case-insensitive, case-preserving) and the subkey order, compared
// byte by byte whatever the database's locale. A key's path is kept
// folded only: it is the key's identity, its name keeps the case. Value
// ids grow as values are first set, which gives the values' order; an
// update keeps the row.
#ifndef KORUTL_PLATFORM_UNIX_PG_PG_SCHEMA_H
#define KORUTL_PLATFORM_UNIX_PG_PG_SCHEMA_H

namespace korutl::store::pg {

// The version korvo.meta holds; a later release that changes the tables
// migrates from the version it finds.
constexpr int schema_version = 1;

// Made by the first write to a server without the store, in one
// transaction; the advisory lock keeps two first writers from racing.
constexpr const char *schema_sql =
    "BEGIN;"
    "SELECT pg_advisory_xact_lock(7306915612471263553);"
    "CREATE SCHEMA IF NOT EXISTS korvo;"
    "CREATE TABLE IF NOT EXISTS korvo.keys("
    " id bigint GENERATED ALWAYS AS IDENTITY PRIMARY KEY,"
    " host text NOT NULL,"
    " parent bigint,"
    " name bytea NOT NULL,"
    " folded bytea NOT NULL,"
    " path bytea NOT NULL,"
    " UNIQUE (path, host),"
    " UNIQUE (id, host),"
    " FOREIGN KEY (parent, host) REFERENCES korvo.keys(id, host) ON DELETE CASCADE,"
    " CHECK ((parent IS NULL) = (position('\\x5c'::bytea IN path) = 0)));"
    "CREATE INDEX IF NOT EXISTS keys_by_parent ON korvo.keys(parent, folded);"
    "CREATE TABLE IF NOT EXISTS korvo.vals("
    " id bigint GENERATED ALWAYS AS IDENTITY PRIMARY KEY,"
    " host text NOT NULL,"
    " key bigint NOT NULL,"
    " name bytea NOT NULL,"
    " folded bytea NOT NULL,"
    " type bigint NOT NULL,"
    " data bytea NOT NULL,"
    " UNIQUE (key, folded),"
    " FOREIGN KEY (key, host) REFERENCES korvo.keys(id, host) ON DELETE CASCADE);"
    "CREATE TABLE IF NOT EXISTS korvo.host_roles(role name PRIMARY KEY, host text NOT NULL);"
    "CREATE TABLE IF NOT EXISTS korvo.meta(version int NOT NULL);"
    "INSERT INTO korvo.meta SELECT 1 WHERE NOT EXISTS (SELECT FROM korvo.meta);"
    "COMMIT;";

}  // namespace korutl::store::pg

#endif
