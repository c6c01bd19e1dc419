# A PostgreSQL server of one's own, for the demo; sourced behind common.sh.

# The newest one that is installed: its programs lie in a folder of its version.
server_program() {
  local found=(/usr/lib/postgresql/*/bin/"$1")
  [ -x "${found[-1]}" ] || die "There is no $1; the package postgresql is missing."
  printf '%s\n' "${found[-1]}"
}

# The server refuses to run as root.
as_server() {
  if [ "$(id -u)" -eq 0 ]; then
    setpriv --reuid=postgres --regid=postgres --init-groups "$@"
  else
    "$@"
  fi
}

# start_server DATA: the server whose data lie in that folder, made when there are none. It is reached through a socket in
# the folder $server_socket, which nobody else can enter, and ends with stop_server at the latest when the script ends.
start_server() {
  server_data=$1
  server_socket=$(mktemp -d /tmp/varnlog-XXXXXX)
  if [ "$(id -u)" -eq 0 ]; then
    mkdir -p "$server_data"
    chown postgres "$server_data" "$server_socket"
  fi
  trap stop_server EXIT
  if [ ! -e "$server_data/PG_VERSION" ]; then
    (cd / && as_server "$(server_program initdb)" -D "$server_data" -E UTF8 --locale=C.UTF-8 -U postgres -A trust \
      >"$server_socket/log") || { cat "$server_socket/log" >&2; die "No server can be made in $server_data"; }
  fi
  (cd / && as_server "$(server_program pg_ctl)" -D "$server_data" -w -s -l "$server_socket/server.log" \
    -o "-k $server_socket -c listen_addresses=" start) ||
    { cat "$server_socket/server.log" >&2; die "No server can be started in $server_data"; }
}

stop_server() {
  trap - EXIT
  if [ -n "${server_socket:-}" ]; then
    (cd / && as_server "$(server_program pg_ctl)" -D "$server_data" -m fast -s stop 2>/dev/null) || true
    rm -rf "$server_socket"
    server_socket=
  fi
}
