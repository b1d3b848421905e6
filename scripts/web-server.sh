# A web server: nginx with a configuration of its own, on a free port of the loopback address. The machine's own nginx, its
# configuration and its service, are not touched.
# Sourced. Who sources it sets server_folder, a folder below build/, and has a function `prepare_web PORT` that makes this
# folder anew, with an nginx.conf in it. The server's address is in `address` from then on.

server_process=
address=

# need_web_server: nginx as the machine has it. Where it has none, nginx is installed and the service that comes with it is
# switched off; init systems other than systemd have started it by then.
need_web_server() {
  [ -x /usr/sbin/nginx ] && return
  need_packages "${server_packages[@]}"
  if ! { as_root /usr/sbin/update-rc.d nginx disable && as_root /usr/sbin/service nginx stop; } >>"$build/packages.log" 2>&1; then
    say "note: the service nginx, which came with the package, could not be switched off"
  fi
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
  cat "$server_folder/output.log" "$server_folder/error.log" >&2
  die "nginx did not start"
}

free_port() {
  python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# The server ends with this script, however that ends. It has the port once it has written its process file.
start_server_on() {
  local folder=$server_folder settings='daemon off;' deadline=$((SECONDS + 20))
  if [ "$(id -u)" -eq 0 ]; then
    settings+=" user $(id -un) $(id -gn);" # the files may lie where nobody else can read
  fi
  address=http://127.0.0.1:$1
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

stop_server() {
  if [ -n "$server_process" ]; then
    kill "$server_process" 2>/dev/null || true
    wait "$server_process" 2>/dev/null || true
    server_process=
  fi
}

# serve_samples FOLDER ADDRESS: the folder becomes the samples' web, with the server at this address.
serve_samples() {
  local file
  rm -rf "$1"
  cp -r samples/web "$1"
  for file in start.xml refused.xml; do
    fill_in "samples/web/stockroom/$file" "$1/stockroom/$file" "$2"
  done
}

# fill_in SAMPLE FILE ADDRESS: a copy in which the samples' server is the one at this address.
fill_in() {
  sed "s|http://apps\.example\.com/|$3/|g" "$1" >"$2"
}
