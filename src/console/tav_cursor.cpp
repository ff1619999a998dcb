// tav_cursor.cpp - the out-of-line destructors that anchor the cursor interfaces' virtual tables.

#include "tav_cursor.h"

TavClUniDirCursorABase::~TavClUniDirCursorABase() = default;

TavClBiDirCursorABase::~TavClBiDirCursorABase() = default;
