# The demo's web server, and what it serves. Sourced by scripts/demo, behind scripts/web-server.sh.

server_folder=$demo/nginx

# What the server needs and serves, for a port.
prepare_web() {
  rm -rf "$server_folder"
  mkdir -p "$server_folder"
  serve_samples "$demo/web" "$address"
  sed "s/@PORT@/$1/" scripts/demo-parts/nginx.conf >"$server_folder/nginx.conf"
}
