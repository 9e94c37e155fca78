// The portable platform's parts, each of which fills its entries of the function table.
#pragma once

namespace oak {

struct TApi;

/// Files, volumes, time, environment, registry, text, memory and item identifier lists.
void BindPortableSystem(TApi& api);
/// The namespace: desktop folder, parsing, binding, shell items.
void BindPortableShell(TApi& api);
/// The property system and the known folder manager.
void BindPortableProperties(TApi& api);
/// Links, libraries, recycle bin, searching, commands.
void BindPortableLinks(TApi& api);

}  // namespace oak
