# To be sourced: serves a random file of 1 GiB with nginx on loopback until the script ends.
#   . bench/gibibyte_server.sh [FOLDER]    sets $url, and $folder to a temporary one in FOLDER
folder=$(mktemp -d "${1:-${TMPDIR:-/tmp}}/transfer-bench.XXXXXX")
server=
trap '[ -z "$server" ] || kill "$server"; rm -rf "$folder"' EXIT
head -c 1G /dev/urandom >"$folder/file"
port=$(shuf -i 20000-30000 -n 1)
cat >"$folder/nginx.conf" <<END
daemon off; master_process off; pid nginx.pid; events {}
http { access_log off; sendfile on; client_body_temp_path tmp; proxy_temp_path tmp;
  fastcgi_temp_path tmp; uwsgi_temp_path tmp; scgi_temp_path tmp;
  server { listen 127.0.0.1:$port; root .; } }
END
nginx -p "$folder" -e error.log -c nginx.conf &
server=$!
url=http://127.0.0.1:$port/file
curl -s -f --retry 20 --retry-connrefused --retry-delay 1 -o /dev/null -r 0-0 "$url"
