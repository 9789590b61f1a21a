// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <optional>

#include "foundation/text/number_reader.h"
#include "foundation/xml/store_visitor.h"
#include "plugin/contract/parameter_record.h"

namespace {

constexpr int kExactDigits = 17;  // so many significant ones tell any double from its neighbours

}  // namespace

bool ParameterRecord::IsStored() const {
    return !identifier.IsEmpty() && (type != ParameterType::Group || HasSwitch());
}

void ParameterRecord::Store(const MStoreVisitor& visitor, double& someValue) const {
    if (!IsStored()) return;
    const MString standard = MString::FromDouble(defaultValue, kExactDigits);
    MString storedText = MString::FromDouble(InRange(someValue), kExactDigits);
    visitor.Text(identifier, storedText, standard);
    if (!visitor.storing) someValue = ReadStored(storedText);
}

double ParameterRecord::ReadStored(const MString& storedText) const {
    const std::optional<double> number = ReadNumber(storedText);
    if (!number) return defaultValue;
    return InRange(type == ParameterType::Float ? *number : std::floor(*number + 0.5));
}
