#!/usr/bin/env bash
# A throwaway PostgreSQL cluster for tests and benchmarks, from Debian's
# binaries (/usr/lib/postgresql/*/bin), listening on a Unix socket in DIR
# only (no TCP). As root the server runs as the `postgres` user.
#   pg-cluster.sh start DIR    makes DIR/data, starts the server, prints its URI
#                              (also in DIR/uri); the database is "korvo"
#   pg-cluster.sh restart DIR  restarts it (fast shutdown: sessions are cut)
#   pg-cluster.sh stop DIR     stops it and removes DIR
#   pg-cluster.sh psql DIR ... runs psql on it as the cluster's superuser
# Without the server binaries, start writes the reason to DIR/unavailable,
# prints it and exits 0, so that the tests can skip saying what to install.
set -euo pipefail
action=${1:?usage: pg-cluster.sh start|restart|stop|psql DIR}
dir=${2:?usage: pg-cluster.sh start|restart|stop|psql DIR}
shift 2

bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1 || true)
as_owner() {
  if [ "$(id -u)" -eq 0 ]; then
    setpriv --reuid=postgres --regid=postgres --init-groups -- "$@"
  else
    "$@"
  fi
}
# The cluster's superuser is named as the calling user, libpq's default.
super=$(id -un)

case "$action" in
  start)
    # A cluster left behind by an interrupted run is thrown away first.
    "$0" stop "$dir"
    mkdir -p "$dir"
    if [ -z "$bin" ] || [ ! -x "$bin/initdb" ]; then
      echo "PostgreSQL is not installed: install the Debian packages postgresql and libpq-dev" \
        "(scripts/deps.sh) to run the server store's tests" | tee "$dir/unavailable"
      exit 0
    fi
    [ "$(id -u)" -ne 0 ] || chown postgres: "$dir"
    chmod 700 "$dir"
    as_owner "$bin/initdb" -D "$dir/data" -U "$super" -A trust -E UTF8 --locale=C.UTF-8 >"$dir/initdb.log"
    as_owner "$bin/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -o \
      "-c listen_addresses='' -c unix_socket_directories='$dir' -c max_connections=200" \
      start >/dev/null
    as_owner "$bin/psql" -h "$dir" -U "$super" -d postgres -qAtc "CREATE DATABASE korvo" >/dev/null
    echo "postgresql:///korvo?host=$dir" | tee "$dir/uri"
    ;;
  restart)
    as_owner "$bin/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -m fast restart >/dev/null
    ;;
  stop)
    if [ -d "$dir/data" ]; then
      as_owner "$bin/pg_ctl" -D "$dir/data" -w -m immediate stop >/dev/null || true
    fi
    rm -rf "$dir"
    ;;
  psql)
    as_owner "$bin/psql" -h "$dir" -U "$super" -d korvo -v ON_ERROR_STOP=1 -qAt "$@"
    ;;
  *)
    echo "usage: pg-cluster.sh start|restart|stop|psql DIR" >&2
    exit 2
    ;;
esac
