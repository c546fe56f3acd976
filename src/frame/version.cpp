#include "kfpcore.h"
#include "kfpgen.h"

namespace {

const char kVersionText[] = "6.1 build 137.56";
const char kBuildDate[] = "Mar 17 2010";

// Two records that differ only in the file name: the "+" one is reported on
// processors that have the core library's feature 0x80.
const LibVersion kPlainRecord = {6, 1, 137, 336, {'y', '8', 0, 0}, "libkfpgeny8.so.6.1", kVersionText, kBuildDate};
const LibVersion kFeatureRecord = {6, 1, 137, 336, {'y', '8', 0, 0}, "libkfpgeny8.so.6.1+", kVersionText, kBuildDate};

}  // namespace

extern "C" const LibVersion* kfpgenGetLibVersion(void) {
    return ownGetFeature(0x80) ? &kFeatureRecord : &kPlainRecord;
}
