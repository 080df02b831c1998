#pragma once

namespace korvo {

/// The language of texts for people. The definition format is bilingual, so are its diagnostics.
enum class Language { english, french };

}  // namespace korvo
