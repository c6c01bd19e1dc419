# The icons, none of which is compressed: without that, Qt's own zlib and the one beside it do not get mixed. Debian's archive
# may lack its sources: see --sources.
source_name=qt6-svg
archive_name=qtsvg
needs=(qtbase)
licences=(LICENSES/*)

build() { with_qt . -DCMAKE_CXX_FLAGS=-DQT_NO_COMPRESS; }
