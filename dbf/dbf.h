// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DBF_H
#define DBF_DBF_H

/// \file
/// Everything that the library offers.

/// \namespace dbf
/// Reading, writing, creating and restructuring of DBF table files.

#include <dbf/converters/dbfbinarydoubleconverter.h>
#include <dbf/converters/dbfbinaryfloatconverter.h>
#include <dbf/converters/dbfboolconverter.h>
#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/dbfdateconverter.h>
#include <dbf/converters/dbfdoubleconverter.h>
#include <dbf/converters/dbffieldconverter.h>
#include <dbf/converters/dbfintconverter.h>
#include <dbf/converters/dbflargeintconverter.h>
#include <dbf/converters/dbfnullableboolconverter.h>
#include <dbf/converters/dbfnullablecurrencyconverter.h>
#include <dbf/converters/dbfnullabledateconverter.h>
#include <dbf/converters/dbfnullabledatetimeconverter.h>
#include <dbf/converters/dbfnullablenumberconverter.h>
#include <dbf/converters/dbfnullablestringconverter.h>
#include <dbf/converters/dbfreadonlyconverter.h>
#include <dbf/converters/dbfsmallintconverter.h>
#include <dbf/converters/dbfstringconverter.h>
#include <dbf/dbfversion.h>
#include <dbf/decimal/decnumber.h>
#include <dbf/decimal/qdeccontext.h>
#include <dbf/decimal/qdecnumber.h>
#include <dbf/format/dbfcodepage.h>
#include <dbf/format/dbflanguagedriver.h>
#include <dbf/format/dbfnullablecolumn.h>
#include <dbf/format/dbftabledescriptor.h>
#include <dbf/memo/dbfmemoconverter.h>
#include <dbf/memo/dbfmemofile.h>
#include <dbf/model/dbfcolumn.h>
#include <dbf/model/dbffielddescriptor.h>
#include <dbf/model/dbffieldtype.h>
#include <dbf/model/dbfrecord.h>
#include <dbf/model/dbfrecordsizeoverflow.h>
#include <dbf/model/dbfschema.h>
#include <dbf/model/dbfvalueproblem.h>
#include <dbf/table/dbfrecordcursor.h>
#include <dbf/table/dbftable.h>
#include <dbf/transform/dbfcopyoptions.h>
#include <dbf/transform/dbffieldtransform.h>
#include <dbf/transform/dbffile.h>
#include <dbf/transform/dbfschematransform.h>

#endif
