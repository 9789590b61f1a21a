// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <new>

#include "foundation/text/exception.h"
#include "hosts/adapter/product_info.h"
#include "plugin/frame/audio_plugin.h"

// What make puts around a new plug-in of the product: make gets the plug-in, and answers a pointer.
//
// Threads  any
// Errors   MException "Error creating Vst plugin object." where there is no plug-in to be had, or
//          no memory; what else the product or make raises
template <typename Make>
auto MakeAdapter(const ProductInfo& product, Make make)
    -> decltype(make(std::unique_ptr<MAudioPlugin>())) {
    try {
        if (std::unique_ptr<MAudioPlugin> plugin = product.create()) return make(std::move(plugin));
    } catch (const std::bad_alloc&) {
    }
    throw MException("Error creating Vst plugin object.");
}
