// What the program takes from room host/, under names of its own namespace.
#pragma once

#include "host/ChainCheck.h"
#include "host/ChainTexts.h"
#include "host/ComponentRuntime.h"
#include "host/FilterFacts.h"
#include "host/FilterList.h"
#include "host/Measurements.h"
#include "host/Pipeline.h"
#include "host/Sizes.h"
#include "host/Texts.h"

namespace program {

using host::ChainError;
using host::ChainText;
using host::ChainTextOf;
using host::CheckChainText;
using host::ComponentRuntime;
using host::CutTo;
using host::DefaultTextOf;
using host::FactsOf;
using host::FilterEntry;
using host::FilterFacts;
using host::FilterTextBehind;
using host::FindFilter;
using host::HasRange;
using host::IsOwnClass;
using host::KeyFacts;
using host::ListFilters;
using host::MakeBlankSource;
using host::MakeCreator;
using host::Measurements;
using host::MeasuringText;
using host::NewFilterText;
using host::ParameterItem;
using host::PathOf;
using host::PictureDestination;
using host::PictureSource;
using host::Pipeline;
using host::PreviewText;
using host::Quoted;
using host::RangeText;
using host::Rectangle;
using host::RepeatMeasurements;
using host::Size;
using host::SizeBehind;
using host::SourcePicture;
using host::SplitParameters;
using host::StartMeasuring;
using host::Suggestion;
using host::TakeMeasurements;
using host::Utf8Of;
using host::WithFullPaths;

}  // namespace program
