// The process-wide table behind FSRef: every item a reference was made for, known by device
// and inode, with an O_PATH descriptor that follows the item through renames and moves (by
// this or any other process), the folder and name it was last found under, and the last
// known path for when the descriptor had to be given up. The calls below may be made from
// any thread; the table is never locked while the disk is asked.
#pragma once

#include "FSItemChanges.h"
#include "FSItemDisk.h"
#include "FSItemEnter.h"
#include "FSItemLocate.h"
#include "FSItemLocation.h"
#include "FSRefBits.h"
