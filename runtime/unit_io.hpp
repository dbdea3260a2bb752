// Unit input and output: reading and writing the files of the file-unit
// manager by unit number. Users include runtime/units.hpp, which holds this.
//
// Every routine takes a unit given out by the manager. A unit that is not
// open gives IoStatus::error. Formatted text lines are written with CR LF and
// read without their line end. Unformatted records carry a 4-byte length
// before and after them. Big-endian units store every number of
// unitWrite*/unitRead* big-endian. One file may be open on several units at
// once; each has its own position, and what one unit writes is seen by the
// others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "runtime/io_status.hpp"
#include "text/text.hpp"

// The unit on which the named file is open in this process, 0 when none.
int32_t unitOpenOn(std::string_view name);
// The same, with whether the name exists and is not a folder, from one look.
int32_t unitOpenOn(std::string_view name, bool& exists);
bool unitIsOpen(int32_t unit);

// A second handle of the unit's file for reading beside it (with pread), and
// the file's size; -1 when the unit is not open or its file is not a regular
// file (a pipe has no second reader). The caller closes the handle.
int unitReadHandle(int32_t unit, int64_t& size);

// Formatted text.
IoStatus unitReadLine(int32_t unit, TextRef line);  // one record, cut to capacity
// The next line when the read buffer already holds all of it, without its
// line end and no longer than maxLength: taken as unitReadLine would take it,
// but only viewed in the buffer (valid until the unit is next used). False,
// with nothing taken, otherwise: then read with unitReadLine.
bool unitTakeBufferedLine(int32_t unit, std::size_t maxLength, std::string_view& line);
IoStatus unitWriteLine(int32_t unit, std::string_view s);  // s and CR LF
IoStatus unitWriteText(int32_t unit, std::string_view s);  // s alone, no line end
bool unitAtEnd(int32_t unit);                              // nothing left to read
IoStatus unitBackspace(int32_t unit);                      // back to the start of the last record read

// Unformatted records.
IoStatus unitWriteRecord(int32_t unit, const void* bytes, std::size_t n);
IoStatus unitReadRecord(int32_t unit, void* bytes, std::size_t capacity, std::size_t& n);

// Binary bytes and numbers. The plain forms use the unit's own byte order;
// the "As" forms state it.
IoStatus unitWriteBytes(int32_t unit, const void* bytes, std::size_t n);
// Room for n bytes straight in the unit's output buffer, where unitWriteBytes
// would put them without a system call; nullptr when there is none. Bytes
// laid there are written once unitBytesWritten says how many, before the
// unit is used again; what lies behind those is never written.
char* unitBytesRoom(int32_t unit, std::size_t n);
void unitBytesWritten(int32_t unit, std::size_t n);
IoStatus unitReadBytes(int32_t unit, void* bytes, std::size_t n);
IoStatus unitWriteI32(int32_t unit, int32_t v);
IoStatus unitWriteF64(int32_t unit, double v);
IoStatus unitReadI32(int32_t unit, int32_t& v);
IoStatus unitReadF64(int32_t unit, double& v);
IoStatus unitWriteI32As(int32_t unit, int32_t v, bool bigEndian);
IoStatus unitWriteF64As(int32_t unit, double v, bool bigEndian);
IoStatus unitReadI32As(int32_t unit, int32_t& v, bool bigEndian);
IoStatus unitReadF64As(int32_t unit, double& v, bool bigEndian);

// Position, in bytes from the start of the file.
IoStatus unitRewind(int32_t unit);
IoStatus unitSeek(int32_t unit, int64_t offset);
int64_t unitTell(int32_t unit);
IoStatus unitFlush(int32_t unit);

// Flushes the pending output of every open unit (used by direct stops).
void unitFlushAll();
