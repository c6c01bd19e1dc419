# The icons. Debian's archive may lack its sources: see --sources.
source_name=qt6-svg
archive_name=qtsvg
needs=(qtbase)
licences=(LICENSES/*)

build() { with_qt .; }
