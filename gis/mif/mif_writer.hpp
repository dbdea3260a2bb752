// MIF/MID family, writing side: the .mif header, the object statements and
// the .mid records of a layer whose files are open in gisMif.
#pragma once

#include <cstdint>
#include <string_view>

#include "gis/model/gis_model.hpp"

void mifWriteHeader(int32_t gisID);
void mifWriteObject(int32_t gisID, const GisObject& object);
void mifOfferPointText(int32_t k, const char* text);  // see gisOfferPointText
// One .mid line; `large` chooses the words of the failure message.
void mifWriteRecord(int32_t gisID, const GisObject& object, std::string_view line, bool large);
