# ko_add_plugin(<name> TYPE <type> SOURCES <source>... [VERSION <version>] [LINK <library>...] [REQUIRES <plug-in>...]
#               [TARGET <target>])
#
# A plug-in of an application: the library <name>.<type>.so with a declaration that the application reads before it opens the
# library. The target has the plug-in's name unless TARGET gives another one.
#
#   VERSION   of the plug-in, for display; by default that of the project.
#   LINK      the libraries that it uses. It is linked with KO::framework in any case. Libraries of a host that have the property
#             KO_PLUGIN_INTERFACE, "<host> <major>.<minor>", are interfaces: the plug-in is loaded only where the host offers the
#             same first number and no smaller second one (PimUtils::setInterface). The framework is one, too.
#   REQUIRES  other plug-ins, as "<name>.<type>", which are loaded before this one.
function(ko_add_plugin name)
  cmake_parse_arguments(PARSE_ARGV 1 PLUGIN "" "TYPE;VERSION;TARGET" "SOURCES;LINK;REQUIRES")
  if(PLUGIN_UNPARSED_ARGUMENTS OR NOT PLUGIN_TYPE OR NOT PLUGIN_SOURCES)
    message(FATAL_ERROR "ko_add_plugin(${name}): write TYPE <type> and SOURCES <source>..., not \"${PLUGIN_UNPARSED_ARGUMENTS}\".")
  endif()
  if(NOT PLUGIN_VERSION)
    set(PLUGIN_VERSION ${PROJECT_VERSION})
  endif()
  if(NOT PLUGIN_VERSION)
    message(FATAL_ERROR "ko_add_plugin(${name}): write VERSION <version>, as the project has none.")
  endif()
  if(NOT PLUGIN_TARGET)
    set(PLUGIN_TARGET ${name})
  endif()

  set(lines "name=${name}" "version=${PLUGIN_VERSION}" "type=${PLUGIN_TYPE}")
  set(interfaces "")
  foreach(library IN ITEMS KO::framework LISTS PLUGIN_LINK)
    if(TARGET ${library})
      get_target_property(interface ${library} KO_PLUGIN_INTERFACE)
      if(interface)
        list(APPEND interfaces "interface=${interface}")
      endif()
    endif()
  endforeach()
  list(REMOVE_DUPLICATES interfaces)
  list(APPEND lines ${interfaces})
  foreach(required IN LISTS PLUGIN_REQUIRES)
    list(APPEND lines "requires=${required}")
  endforeach()
  set(KO_PLUGIN_LINES "")
  foreach(line IN LISTS lines)
    if(line MATCHES "[\"\\\\\r\n]" OR line MATCHES "=$")
      message(FATAL_ERROR "ko_add_plugin(${name}): \"${line}\" cannot be declared.")
    endif()
    string(APPEND KO_PLUGIN_LINES "    \"${line}\\n\"\n")
  endforeach()
  # Linkers for Windows keep all sections, and know no mark for that.
  set(KO_PLUGIN_KEPT "gnu::used, gnu::retain")
  if(WIN32)
    set(KO_PLUGIN_KEPT "gnu::used")
  endif()
  set(declaration ${CMAKE_CURRENT_BINARY_DIR}/${PLUGIN_TARGET}.declaration.cpp)
  configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/koPlugIn.cpp.in ${declaration} @ONLY)

  add_library(${PLUGIN_TARGET} MODULE ${PLUGIN_SOURCES} ${declaration})
  set_target_properties(${PLUGIN_TARGET} PROPERTIES
    PREFIX "" OUTPUT_NAME ${name} SUFFIX .${PLUGIN_TYPE}${CMAKE_SHARED_LIBRARY_SUFFIX})
  target_link_libraries(${PLUGIN_TARGET} PRIVATE ${PLUGIN_LINK} KO::framework)
endfunction()
