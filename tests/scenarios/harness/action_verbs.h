#pragma once

#include "harness/World.h"

/// One function for each verb that may stand above a transcript; actions.cpp has their table.
namespace quillport::scenarios {

using RunVerb = void(World& world, Words& words, const Action& action);

// given.cpp: what stands there before
RunVerb giveRemoteFile;
RunVerb giveRemoteFolder;
RunVerb giveLocalFile;
RunVerb giveLocalFolder;
RunVerb deleteEntry;
RunVerb makeCurrent;
RunVerb setHost;
RunVerb setBoard;
RunVerb setRegion;
RunVerb setLink;
RunVerb giveXml;
RunVerb planAnswer;
RunVerb planPick;

// planned.cpp: what goes wrong, and what happens inside of calls
RunVerb planFailure;
RunVerb planTruncation;
RunVerb planStimulus;

// doing.cpp: the operator, the page, and procedures by name
RunVerb start;
RunVerb login;
RunVerb press;
RunVerb doublePress;
RunVerb pressKey;
RunVerb typeText;
RunVerb chooseFileType;
RunVerb usePage;
RunVerb callProcedure;
RunVerb writeMember;
RunVerb addRecord;
RunVerb makePending;
RunVerb stopProgram;
RunVerb showOnly;
RunVerb hide;

} // namespace quillport::scenarios
