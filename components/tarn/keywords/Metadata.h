#pragma once

// All metadata interfaces at once, for code that walks metadata of any kind.
#include <tarn/keywords/IKeywordIntegerMD.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordMapMD.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRawTextMD.h>
#include <tarn/keywords/IKeywordRealMD.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/IKeywordRestOfLineMD.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/IKeywordYesNoMD.h>
