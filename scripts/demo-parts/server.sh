# The demo's web server, and what it serves. Sourced by scripts/demo, behind scripts/web-server.sh.

server_folder=$demo/nginx

# fill_in SAMPLE FILE: a copy in which the samples' server is the demo's.
fill_in() {
  sed "s|http://apps\.example\.com/|$address/|g" "$1" >"$2"
}

# What the server needs and serves, for a port.
prepare_web() {
  local file
  rm -rf "$server_folder" "$demo/web"
  mkdir -p "$server_folder"
  cp -r samples/web "$demo/web"
  sed "s/@PORT@/$1/" scripts/demo-parts/nginx.conf >"$server_folder/nginx.conf"
  for file in start.xml refused.xml; do
    fill_in "samples/web/stockroom/$file" "$demo/web/stockroom/$file"
  done
}
