#include "transfer/DocumentType.h"

// The document type of a permission file, as it is written into one: every byte counts, the last line feed too.
// clang-format off
const char kPermitDTD[] =
    "<!DOCTYPE VantorPermissions [\n"
    "<!ELEMENT VantorPermissions (Source, Destination)>\n"
    "<!ATTLIST VantorPermissions version CDATA #REQUIRED>\n"
    "<!ELEMENT Source (URL+, Extension+)>\n"
    "<!ELEMENT Destination ((InternetCache?, VantorUser*, Personal*, Documents*, Temp*, Path*"
    ", LocalVantorData*, LocalApplicationData*, CommonVantorData*, CommonApplicationData*, VantorData*"
    ", ApplicationData*)+)>\n"
    "<!ELEMENT URL (#PCDATA)>\n"
    "<!ELEMENT Extension (#PCDATA)>\n"
    "<!ELEMENT InternetCache EMPTY>\n"
    "<!ELEMENT VantorUser (#PCDATA)>\n"
    "<!ELEMENT Personal (#PCDATA)>\n"
    "<!ELEMENT Documents (#PCDATA)>\n"
    "<!ELEMENT Path (#PCDATA)>\n"
    "<!ELEMENT Temp (#PCDATA)>\n"
    "<!ELEMENT LocalVantorData (#PCDATA)>\n"
    "<!ELEMENT LocalApplicationData (#PCDATA)>\n"
    "<!ELEMENT CommonVantorData (#PCDATA)>\n"
    "<!ELEMENT CommonApplicationData (#PCDATA)>\n"
    "<!ELEMENT VantorData (#PCDATA)>\n"
    "<!ELEMENT ApplicationData (#PCDATA)>\n"
    "]>\n";
// clang-format on
