// Where a sequence takes its input files from: the values of "FileVariation" in its input part.
#pragma once

enum InputKind { kInputFiles = 0, kInputFolder = 1, kInputAskUser = 2 };
