// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hosts/adapter/product_info.h"

// This product, in one place for all interfaces and for what is generated from it. Its identifiers
// are frozen: songs find the plug-in by them.
//
// Threads  any
extern const ProductInfo kProduct;

// kProduct's: a new plug-in with the chorus in it, behind the process's own start-up. Null where
// that failed. Errors: std::bad_alloc.
std::unique_ptr<MAudioPlugin> CreateProductPlugin();
