# The plug-in must export its entry and nothing else. Expects NM and PLUGIN.
execute_process(COMMAND ${NM} -D --defined-only ${PLUGIN} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${symbols}" symbols)
if(NOT symbols MATCHES "^[0-9a-f]+ T PlugInMain$")
  message(FATAL_ERROR "Exported symbols of ${PLUGIN}:\n${symbols}")
endif()
