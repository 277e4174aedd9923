#!/usr/bin/env bash
# Starts throw-away PostgreSQL and MariaDB servers on loopback for the integration tests and
# registers the ODBC drivers in a temporary ODBCSYSINI.
#
#   eval "$(scripts/test-servers.sh)"          start (or reuse) the servers, export the settings
#   scripts/test-servers.sh stop               stop the servers and remove the session folder
#
# The session folder ($VARSENTIX_SERVERS_DIR, default ${TMPDIR:-/tmp}/varsentix-servers-<uid>-<id
# of this checkout>) holds the data directories, sockets, logs, odbcinst.ini/odbc.ini and env.sh.
# A second call with the same folder reuses the servers that are still running; checkouts side by
# side get servers of their own, so that one stopping its servers never disturbs another.
#
# Prints export lines for:
#   ODBCSYSINI              the folder with odbcinst.ini ("SQLite3", "PostgreSQL Unicode",
#                           "MariaDB Unicode") and an empty odbc.ini
#   VARSENTIX_PG_ODBC       ODBC connection string of a role that may create databases
#   VARSENTIX_MARIADB_ODBC  the same for MariaDB
#   VARSENTIX_SERVERS_STOP  the command that stops both servers
# When run as root, missing packages are installed with apt-get first. The servers never run as
# root: as root they run as the unprivileged users postgres and mysql.
# Everything the script says goes to standard error; standard output carries only the exports.
set -euo pipefail

PACKAGES=(unixodbc unixodbc-dev odbc-postgresql odbc-mariadb libsqliteodbc postgresql mariadb-server
          mariadb-client)
TEST_USER=varsentix
TEST_PASSWORD=varsentix-test

say() { echo "test-servers: $*" >&2; }
die() { say "$*"; exit 1; }

CHECKOUT_ID=$(cd "$(dirname "$0")/.." && pwd | md5sum | cut -c1-8)
SESSION_DIR="${VARSENTIX_SERVERS_DIR:-${TMPDIR:-/tmp}/varsentix-servers-$(id -u)-$CHECKOUT_ID}"
PG_DIR="$SESSION_DIR/pg"
MY_DIR="$SESSION_DIR/mariadb"
ODBC_DIR="$SESSION_DIR/odbc"
ENV_FILE="$SESSION_DIR/env.sh"

# Runs a command as the unprivileged owner of a server when we are root, else as ourselves.
as_owner() {
  local owner=$1; shift
  if [ "$(id -u)" -eq 0 ]; then runuser -u "$owner" -- "$@"; else "$@"; fi
}

install_missing() {
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -ne 0 ]; then
    die "missing packages (run as root to install them): ${missing[*]}"
  fi
  say "installing ${missing[*]}"
  DEBIAN_FRONTEND=noninteractive apt-get update -qq >&2
  DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}" >&2
}

# A TCP port on 127.0.0.1 nobody listens on.
free_port() {
  python3 - <<'EOF'
import socket
s = socket.socket()
s.bind(("127.0.0.1", 0))
print(s.getsockname()[1])
s.close()
EOF
}

driver_path() {  # driver_path <package> <file name>
  local path
  path=$(dpkg -L "$1" 2>/dev/null | grep "/$2\$" | head -n1 || true)
  [ -n "$path" ] || die "driver $2 not found in package $1"
  echo "$path"
}

pg_bin() {
  local dir
  dir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n1)
  [ -n "$dir" ] || die "PostgreSQL server binaries not found"
  echo "$dir"
}

pg_running() {
  [ -f "$PG_DIR/port" ] && [ -f "$PG_DIR/data/postmaster.pid" ] &&
    as_owner "$PG_OWNER" "$(pg_bin)/pg_ctl" -D "$PG_DIR/data" status >/dev/null 2>&1
}

start_postgres() {
  local bin; bin=$(pg_bin)
  if pg_running; then say "reusing PostgreSQL on port $(cat "$PG_DIR/port")"; return 0; fi
  rm -rf "$PG_DIR"; mkdir -p "$PG_DIR"
  [ "$(id -u)" -eq 0 ] && chown "$PG_OWNER" "$PG_DIR"
  local port; port=$(free_port)
  local pwfile="$PG_DIR/superuser.pw"
  echo "$TEST_PASSWORD" > "$pwfile"; chmod 600 "$pwfile"
  [ "$(id -u)" -eq 0 ] && chown "$PG_OWNER" "$pwfile"
  as_owner "$PG_OWNER" "$bin/initdb" -D "$PG_DIR/data" -U postgres --pwfile="$pwfile" \
    -E UTF8 --locale=C.UTF-8 --auth-local=trust --auth-host=scram-sha-256 >"$SESSION_DIR/pg-initdb.log" 2>&1 ||
    die "initdb failed, see $SESSION_DIR/pg-initdb.log"
  as_owner "$PG_OWNER" "$bin/pg_ctl" -D "$PG_DIR/data" -l "$PG_DIR/server.log" -w -t 60 \
    -o "-c listen_addresses=127.0.0.1 -p $port -k $PG_DIR -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c autovacuum=off -c max_connections=200" \
    start >&2 9>&- || die "PostgreSQL did not start, see $PG_DIR/server.log"
  echo "$port" > "$PG_DIR/port"
  as_owner "$PG_OWNER" psql -h "$PG_DIR" -p "$port" -U postgres -d postgres -v ON_ERROR_STOP=1 -q \
    -c "CREATE ROLE $TEST_USER LOGIN CREATEDB PASSWORD '$TEST_PASSWORD'" >&2
  say "PostgreSQL listening on 127.0.0.1:$port"
}

# The role's own database, which the driver connects to when no Database is named, and the
# right to end sessions of the databases it drops.
ensure_pg_default_database() {
  local port; port=$(cat "$PG_DIR/port")
  # pg_signal_backend: DROP DATABASE ... WITH (FORCE) of a test database may end sessions.
  echo "GRANT pg_signal_backend TO $TEST_USER;
        SELECT 'CREATE DATABASE $TEST_USER OWNER $TEST_USER' WHERE NOT EXISTS
          (SELECT 1 FROM pg_database WHERE datname = '$TEST_USER') \gexec" |
    as_owner "$PG_OWNER" psql -h "$PG_DIR" -p "$port" -U postgres -d postgres -v ON_ERROR_STOP=1 -q -X >&2 9>&-
}

my_running() {
  [ -f "$MY_DIR/port" ] && [ -f "$MY_DIR/mariadbd.pid" ] &&
    kill -0 "$(cat "$MY_DIR/mariadbd.pid")" 2>/dev/null
}

start_mariadb() {
  if my_running; then say "reusing MariaDB on port $(cat "$MY_DIR/port")"; return 0; fi
  rm -rf "$MY_DIR"; mkdir -p "$MY_DIR/data"
  [ "$(id -u)" -eq 0 ] && chown -R "$MY_OWNER" "$MY_DIR"
  local port; port=$(free_port)
  local user_opt=()
  [ "$(id -u)" -eq 0 ] && user_opt=(--user="$MY_OWNER")
  mariadb-install-db --no-defaults "${user_opt[@]}" --datadir="$MY_DIR/data" \
    --auth-root-authentication-method=normal --skip-test-db >"$SESSION_DIR/mariadb-install.log" 2>&1 ||
    die "mariadb-install-db failed, see $SESSION_DIR/mariadb-install.log"
  # Started in the background; its pid file tells later calls that it runs.
  setsid mariadbd --no-defaults "${user_opt[@]}" --datadir="$MY_DIR/data" --port="$port" \
    --bind-address=127.0.0.1 --socket="$MY_DIR/mariadb.sock" --pid-file="$MY_DIR/mariadbd.pid" \
    --log-error="$MY_DIR/server.log" --character-set-server=utf8mb4 --collation-server=utf8mb4_general_ci \
    --innodb-flush-log-at-trx-commit=0 --innodb-buffer-pool-size=64M --max-connections=200 \
    --skip-name-resolve </dev/null >/dev/null 2>&1 9>&- &
  local i
  for i in $(seq 1 120); do
    mariadb --no-defaults -S "$MY_DIR/mariadb.sock" -u root -e "SELECT 1" >/dev/null 2>&1 && break
    sleep 0.5
  done
  mariadb --no-defaults -S "$MY_DIR/mariadb.sock" -u root -e "SELECT 1" >/dev/null 2>&1 ||
    die "MariaDB did not start, see $MY_DIR/server.log"
  echo "$port" > "$MY_DIR/port"
  mariadb --no-defaults -S "$MY_DIR/mariadb.sock" -u root <<EOF
CREATE USER '$TEST_USER'@'127.0.0.1' IDENTIFIED BY '$TEST_PASSWORD';
CREATE USER '$TEST_USER'@'localhost' IDENTIFIED BY '$TEST_PASSWORD';
GRANT ALL PRIVILEGES ON *.* TO '$TEST_USER'@'127.0.0.1';
GRANT ALL PRIVILEGES ON *.* TO '$TEST_USER'@'localhost';
EOF
  say "MariaDB listening on 127.0.0.1:$port"
}

write_odbc_ini() {
  mkdir -p "$ODBC_DIR"
  cat > "$ODBC_DIR/odbcinst.ini" <<EOF
[SQLite3]
Description=SQLite3 ODBC Driver
Driver=$(driver_path libsqliteodbc libsqlite3odbc.so)
UsageCount=1

[PostgreSQL Unicode]
Description=PostgreSQL ODBC driver (Unicode version)
Driver=$(driver_path odbc-postgresql psqlodbcw.so)
UsageCount=1

[MariaDB Unicode]
Description=MariaDB Connector/ODBC (Unicode)
Driver=$(driver_path odbc-mariadb libmaodbc.so)
UsageCount=1
EOF
  [ -f "$ODBC_DIR/odbc.ini" ] || : > "$ODBC_DIR/odbc.ini"
  chmod 755 "$ODBC_DIR"; chmod 644 "$ODBC_DIR"/*.ini
}

stop_servers() {
  if [ -d "$SESSION_DIR" ]; then
    if [ -f "$PG_DIR/data/postmaster.pid" ]; then
      as_owner "$PG_OWNER" "$(pg_bin)/pg_ctl" -D "$PG_DIR/data" -m fast -w stop >&2 || true
    fi
    if [ -f "$MY_DIR/mariadbd.pid" ]; then
      local pid; pid=$(cat "$MY_DIR/mariadbd.pid")
      kill "$pid" 2>/dev/null || true
      for _ in $(seq 1 60); do kill -0 "$pid" 2>/dev/null || break; sleep 0.5; done
    fi
    rm -rf "$SESSION_DIR"
    say "stopped; removed $SESSION_DIR"
  fi
}

PG_OWNER=$(id -un); MY_OWNER=$(id -un)
if [ "$(id -u)" -eq 0 ]; then PG_OWNER=postgres; MY_OWNER=mysql; fi

case "${1:-start}" in
  stop) stop_servers; exit 0 ;;
  start) ;;
  *) die "usage: $0 [start|stop]" ;;
esac

install_missing
mkdir -p "$SESSION_DIR"
chmod 755 "$SESSION_DIR"
exec 9>"$SESSION_DIR/.lock"
flock 9
write_odbc_ini
start_postgres
ensure_pg_default_database
start_mariadb

PG_PORT=$(cat "$PG_DIR/port"); MY_PORT=$(cat "$MY_DIR/port")
cat > "$ENV_FILE" <<EOF
export ODBCSYSINI='$ODBC_DIR'
export VARSENTIX_PG_ODBC='Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=$PG_PORT;Uid=$TEST_USER;Pwd=$TEST_PASSWORD'
export VARSENTIX_MARIADB_ODBC='Driver={MariaDB Unicode};Server=127.0.0.1;Port=$MY_PORT;Uid=$TEST_USER;Pwd=$TEST_PASSWORD'
export VARSENTIX_SERVERS_STOP='VARSENTIX_SERVERS_DIR=$SESSION_DIR $(cd "$(dirname "$0")" && pwd)/$(basename "$0") stop'
EOF
cat "$ENV_FILE"
