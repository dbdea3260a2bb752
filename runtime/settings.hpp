// The settings of the file-unit manager, with the values that FILEINIT gives
// them. The exit routines read them too (pause, dialogue boxes, files left
// open), so they stand below both.
#pragma once

#include <cstdint>

#include "text/text.hpp"

struct FileUnitSettings {
    bool messageBoxMode = false;  // talk through dialogue boxes
    Text<100> applicationName;    // first word of every dialogue
    Text<100> runName;            // second word of dialogue titles
    int32_t logUnit = 0;          // reports go here too when above 0
    char inputDrive = ' ';        // replaces the drive letter of input files
    char outputDrive = ' ';       // replaces the drive letter of output files
    bool createFoldersWithoutAsking = false;
    bool pauseOnPrematureExit = true;
    bool leaveFilesOpenAtExit = false;
    bool copyMode = false;  // mirror inputs, redirect outputs
    Text<1000> copyRoot;
    bool copyNamedFileOnly = false;
    Text<1000> lastCopyName;
    int32_t blockSize = 0;
};
extern FileUnitSettings fileUnitSettings;
