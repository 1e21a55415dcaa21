# For the scripts that build a library for Windows from Debian's source package; to be sourced.
# Package lists of its own: the system's configuration is left alone.

# fetch_debian_source PACKAGE FOLDER: unpacks the maker's archive of the package into FOLDER/tree. It
# is fetched once; several builds may ask at the same time. prepare_source, if the caller has defined
# it, is then run in the tree.
fetch_debian_source() {
  mkdir -p "$2"
  (
    flock 9
    [ -e "$2/done" ] || { unpack_debian_source "$1" "$2" && touch "$2/done"; }
  ) 9>"$2/lock"
}

unpack_debian_source() {
  local apt=$2/apt
  mkdir -p "$apt/lists/partial" "$apt/parts" "$2/tree"
  if [ -f /etc/apt/sources.list.d/debian.sources ]; then
    sed 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >"$apt/parts/src.sources"
  else
    sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$apt/parts/src.list"
  fi
  local options=(-qq -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$apt/parts"
    -o "Dir::State::lists=$apt/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
    -o APT::Sandbox::User=root)
  apt-get "${options[@]}" update
  (cd "$2" && apt-get "${options[@]}" --download-only source "$1")
  tar -xf "$2/$1"_*.orig.tar.* -C "$2/tree" --strip-components=1
  if declare -F prepare_source >/dev/null; then (cd "$2/tree" && prepare_source); fi
}
