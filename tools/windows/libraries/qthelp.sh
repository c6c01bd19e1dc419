# The help pages: of Qt's tools only the library that reads them. Debian's archive may lack its sources: see --sources.
source_name=qt6-tools
archive_name=qttools
needs=(qtbase)
licences=(LICENSES/*)

build() {
  # The folders of all other tools are passed over.
  printf '%s\n' 'qt_feature_evaluate_features("${CMAKE_CURRENT_SOURCE_DIR}/../configure.cmake")' 'add_subdirectory(global)' \
    'add_subdirectory(assistant/help)' >src/CMakeLists.txt
  with_qt . -DQt6ToolsTools_DIR="/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/cmake/Qt6ToolsTools"
}
