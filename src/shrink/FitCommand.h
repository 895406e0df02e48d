#pragma once

#include "shrink/FitPlan.h"
#include "shrink/ShrinkBlockset.h"

class BlocksetDocument;

// Fit on the blockset a document has open: the lossless Shrink first, then
// the lossy steps planned over what Shrink leaves.
struct DocumentFit {
    ShrinkPlan shrink;
    FitPlan fit;
};

DocumentFit planDocumentFit(BlocksetDocument &document, const FitOptions &options);
// One edit of the document: Shrink, the chosen steps' files written, and the
// changed files packed as Shrink packs them.
Result applyDocumentFit(BlocksetDocument &document, const DocumentFit &plan);
