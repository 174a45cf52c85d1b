# Writes the source that holds the time of the build. usage: cmake -D OUTPUT=FILE -P BuildStamp.cmake
#
# The time is the clock's, in the local zone, or that of SOURCE_DATE_EPOCH, in UTC. What the build was
# CONFIGURED_FOR is not read: it makes another command of this one, which is then run again.

if(NOT "$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  set(zone UTC)
endif()
# %b is English whatever the locale.
string(TIMESTAMP stamp "%b;%d;%Y;%H:%M:%S" ${zone})
list(GET stamp 0 month)
list(GET stamp 1 day)
list(GET stamp 2 year)
list(GET stamp 3 time)
string(REGEX REPLACE "^0" " " day ${day})

file(WRITE ${OUTPUT} "#include \"manager/BuildStamp.h\"

namespace qorix {

const char* const kBuildDate = \"${month} ${day} ${year}\";
const char* const kBuildTime = \"${time}\";

}  // namespace qorix
")
