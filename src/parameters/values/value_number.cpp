// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_number.h"

template class MValueNumber<double, double, false, false>;
template class MValueNumber<double, double, false, true>;
template class MValueNumber<float, double, false, false>;
template class MValueNumber<int, int, true, false>;
template class MValueNumber<short, int, true, false>;
template class MValueNumber<long long, long long, true, false>;
