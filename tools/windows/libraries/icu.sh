# What the program uses of ICU, compiled directly: its own build knows this system's tools only in part. A library alone, the
# data inside, cut to the converters and the collation that are used.
source_name=icu
licences=(debian/copyright LICENSE)

# What common/ is used by, and the collation of i18n/ with the text iterators it needs.
icu_collation() {
  local file
  for file in i18n/*.cpp; do
    case $(basename "$file" .cpp) in
      bocsu | coleitr | coll | collation* | ucln_in | rulebasedcollator | sortkey | ucol | ucol_* | ucoleitr | uitercollationiterator | \
        utf8collationiterator | utf16collationiterator | ulocdata) printf '%s\n' "$file" ;;
    esac
  done
}

icu_data() {
  local archive=data/in/icudt72l.dat items=$recipes/icu.items.txt
  icupkg -tl -l "$archive" | grep -vxFf "$items" >removed.txt
  icupkg -tl -r removed.txt "$archive" icudt72l.dat
  genccode -a gcc-mingw64 -e icudt72 icudt72l.dat
  "$host-gcc-posix" -c icudt72l_dat.S -o icudt72l_dat.o
}

build() {
  local flags=(-std=c++17 -DU_STATIC_IMPLEMENTATION -DU_ATTRIBUTE_DEPRECATED= -DNDEBUG -D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00
    -Icommon -Ii18n)
  cd "$([ -d source ] && echo source || echo icu/source)"
  printf '%s\n' common/*.cpp | xargs -P "$jobs" -I '{}' sh -c \
    '"$0" -O2 "$@" -DU_COMMON_IMPLEMENTATION -c "{}" -o "common/$(basename "{}" .cpp).o"' "$host-g++-posix" "${flags[@]}"
  icu_collation | xargs -P "$jobs" -I '{}' sh -c \
    '"$0" -O2 "$@" -DU_I18N_IMPLEMENTATION -c "{}" -o "i18n/$(basename "{}" .cpp).o"' "$host-g++-posix" "${flags[@]}"
  icu_data
  rm -f "$prefix"/lib/libicu*.a
  "$host-ar" rcs "$prefix/lib/libicuuc.a" common/*.o icudt72l_dat.o
  "$host-ar" rcs "$prefix/lib/libicui18n.a" i18n/*.o
  mkdir -p "$prefix/include/unicode"
  cp common/unicode/*.h i18n/unicode/*.h "$prefix/include/unicode/"
  cd - >/dev/null
  [ -e LICENSE ] || cp source/../LICENSE . 2>/dev/null || true
}
