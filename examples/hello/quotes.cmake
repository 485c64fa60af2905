# Fails unless the text of EXAMPLE stands whole in DOCUMENT.
file(READ ${DOCUMENT} document)
file(READ ${EXAMPLE} example)
string(FIND "${document}" "${example}" position)
if(position EQUAL -1)
    message(FATAL_ERROR "${DOCUMENT} does not show ${EXAMPLE} as it is")
endif()
