# The demo's web server: nginx with a configuration of its own below build/demo, on a free port of the loopback address.
# Sourced by scripts/demo. The machine's own nginx, its configuration and its service, are not touched.

server_process=
address=

# need_web_server: nginx as the machine has it. Where it has none, nginx is installed and the service that comes with it is
# switched off; init systems other than systemd have started it by then.
need_web_server() {
  [ -x /usr/sbin/nginx ] && return
  need_packages "${demo_packages[@]}"
  if ! { as_root /usr/sbin/update-rc.d nginx disable && as_root /usr/sbin/service nginx stop; } >>"$build/packages.log" 2>&1; then
    say "note: the service nginx, which came with the package, could not be switched off"
  fi
}

# fill_in SAMPLE FILE: a copy in which the samples' server is the demo's.
fill_in() {
  sed "s|http://apps\.example\.com/|$address/|g" "$1" >"$2"
}

# start_server: another program may take the port between the choice and the start; then another port is tried.
start_server() {
  local attempt
  say "Starting nginx"
  for attempt in 1 2 3 4 5; do
    if start_server_on "$(free_port)"; then
      return
    fi
    say "Attempt $attempt failed"
  done
  cat "$demo/nginx/output.log" "$demo/nginx/error.log" >&2
  die "nginx did not start"
}

free_port() {
  python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# The server ends with this script, however that ends. It has the port once it has written its process file.
start_server_on() {
  local folder=$demo/nginx settings='daemon off;' deadline=$((SECONDS + 20))
  if [ "$(id -u)" -eq 0 ]; then
    settings+=" user $(id -un) $(id -gn);" # the files may lie where nobody else can read
  fi
  prepare_web "$1"
  setpriv --pdeathsig TERM /usr/sbin/nginx -p "$folder" -e error.log -c nginx.conf -g "$settings" \
    >"$folder/output.log" 2>&1 </dev/null &
  server_process=$!
  until [ -s "$folder/nginx.pid" ]; do
    if ! kill -0 "$server_process" 2>/dev/null || [ "$SECONDS" -ge "$deadline" ]; then
      stop_server
      return 1
    fi
    sleep 0.05
  done
}

# What the server needs and serves, for a port.
prepare_web() {
  local file
  address=http://127.0.0.1:$1
  rm -rf "$demo/nginx" "$demo/web"
  mkdir -p "$demo/nginx"
  cp -r samples/web "$demo/web"
  sed "s/@PORT@/$1/" scripts/demo-parts/nginx.conf >"$demo/nginx/nginx.conf"
  for file in start.xml refused.xml; do
    fill_in "samples/web/stockroom/$file" "$demo/web/stockroom/$file"
  done
}

stop_server() {
  if [ -n "$server_process" ]; then
    kill "$server_process" 2>/dev/null || true
    wait "$server_process" 2>/dev/null || true
    server_process=
  fi
}
