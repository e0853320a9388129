// Extended fields: what a message carries beside the members of its class.
#include "ideas.h"
#include "plant_messages.h"
#include "printing.h"

#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reflector.h"

#include <iostream>
#include <string>

using namespace Zelm;

namespace MessagePatterns {

namespace {

// quote begins: field class
struct Calibration : MetaData::MirroredObject {
    MetaData::Reflector<std::string, false, true> by{this, "By"};
    MetaData::Reflector<double, false, true> offset{this, "Offset"};
};
// quote ends: field class

}  // namespace

void showExtendedFields()
{
    // quote begins: extended field
    Calibration written;
    written.by = "Ada";
    written.offset = -0.5;
    Temperature measured({"plant", "line 1", "oven"}, 180.5);
    measured.setExtendedField("Calibration", written);
    std::cout << formOf(measured) << '\n';

    Message const& received = measured;  // whoever gets it need not know its class
    if (received.hasExtendedField("Calibration")) {
        Calibration read;
        read.copyFromMetaData(received.extendedField("Calibration"));
        std::cout << "calibrated by " << read.by() << ", off by " << read.offset() << '\n';
    }
    // quote ends: extended field

    // NOLINTBEGIN(cppcoreguidelines-slicing): a copy of the base class, on purpose
    // quote begins: copy
    Temperature const another({"plant", "line 1", "oven"}, 180.5);
    std::cout << "as another one: " << (measured == another ? "equal" : "not equal") << '\n';
    Message const copy(measured);
    std::cout << "a copy has the field: " << (copy.hasExtendedField("Calibration") ? "yes" : "no") << '\n';
    // quote ends: copy
    // NOLINTEND(cppcoreguidelines-slicing)
}

}  // namespace MessagePatterns
