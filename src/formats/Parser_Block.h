#pragma once

#include "formats/BlocksetModel.h"

class Parser;

// Fills the block name, type and BSP state of `row` from the block file in the
// parser's buffer.
void readBlock(Parser &parser, BlockRow &row);
