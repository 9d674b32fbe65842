# cmake -Dfrom=FILE -Dto=FILE -P WriteNumbers.cmake: the bytes of a file as numbers that a source includes.
file(READ ${from} bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE ${to} "${bytes}\n")
