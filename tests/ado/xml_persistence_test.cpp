#include <gtest/gtest.h>

#include <fstream>

#include "AdoTestSupport.h"
#include "platform/ado/XmlPersistence.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado;
using namespace varsentix::testing;

namespace {

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// A database with one table of awkward values, saved to a file in dir.
std::string saveAwkwardRows(const TempDir& dir, const std::string& select) {
  std::string path = dir.file("db.sqlite");
  std::ofstream(path).close();
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  cn->Execute("CREATE TABLE [odd table] ([id] INTEGER PRIMARY KEY, [first name] VARCHAR(20), "
              "[xmlish] TEXT, [2nd] INTEGER, [b] BOOLEAN, [d] DATE, [m] MONEY)");
  cn->Execute("INSERT INTO [odd table] VALUES (1, 'a''b', 'x<y>&z\"', 2, 1, '2020-01-02', 12.3456)");
  cn->Execute("INSERT INTO [odd table] VALUES (2, 'line' || char(10) || 'break' || char(1) || 'ctl', "
              "NULL, NULL, 0, NULL, NULL)");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(select, cn, adOpenStatic, adLockOptimistic, adCmdText);
  std::string file = dir.file("rows.xml");
  rs->Save(file);
  return file;
}

}  // namespace

TEST(XmlPersistence, AttributeEscapingCoversMarkupQuotesAndControlCharacters) {
  using ado::detail::escapeXmlAttribute;
  EXPECT_EQ(escapeXmlAttribute("a<b>&'\""), "a&lt;b&gt;&amp;&apos;&quot;");
  EXPECT_EQ(escapeXmlAttribute("x\ty\nz\r"), "x&#x9;y&#xA;z&#xD;");
  EXPECT_EQ(escapeXmlAttribute(std::string("\x01", 1)), "&#x1;");
  EXPECT_EQ(escapeXmlAttribute("Grüße €"), "Grüße €");
  EXPECT_EQ(escapeXmlAttribute("bad\xFF"), "bad\xEF\xBF\xBD");
}

TEST(XmlPersistence, FileHasTheRowsetSchemaNamespacesAndRows) {
  TempDir dir;
  std::string xml = readFile(saveAwkwardRows(dir, "select * from [odd table] order by [id]"));
  EXPECT_EQ(xml.rfind("<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'", 0), 0u);
  EXPECT_NE(xml.find("xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'"), std::string::npos);
  EXPECT_NE(xml.find("xmlns:rs='urn:schemas-microsoft-com:rowset'"), std::string::npos);
  EXPECT_NE(xml.find("xmlns:z='#RowsetSchema'"), std::string::npos);
  EXPECT_NE(xml.find("<s:Schema id='RowsetSchema'>"), std::string::npos);
  EXPECT_NE(xml.find("rs:updatable='true'"), std::string::npos);
  EXPECT_NE(xml.find("<s:AttributeType name='id' rs:number='1'"), std::string::npos);
  EXPECT_NE(xml.find("rs:keycolumn='true'"), std::string::npos);
  EXPECT_NE(xml.find("rs:basetable='odd table'"), std::string::npos);
  EXPECT_NE(xml.find("dt:type='int'"), std::string::npos);
  EXPECT_NE(xml.find("dt:type='boolean'"), std::string::npos);
  EXPECT_NE(xml.find("dt:type='date'"), std::string::npos);
  EXPECT_NE(xml.find("dt:type='number' rs:dbtype='currency'"), std::string::npos);
  // A name that is no XML name is written as c<n> with its own name beside it.
  EXPECT_NE(xml.find("name='c1' rs:name='first name'"), std::string::npos);
  EXPECT_NE(xml.find("name='c2' rs:name='xmlish'"), std::string::npos);
  EXPECT_NE(xml.find("name='c3' rs:name='2nd'"), std::string::npos);
  EXPECT_NE(xml.find("<rs:data>"), std::string::npos);
  EXPECT_NE(xml.find("<z:row id='1' c1='a&apos;b' c2='x&lt;y&gt;&amp;z&quot;' c3='2' b='True' d='2020-01-02' m='12.3456'/>"),
            std::string::npos) << xml;
  // Null is a missing attribute.
  EXPECT_NE(xml.find("<z:row id='2' c1='line&#xA;break&#x1;ctl' b='False'/>"), std::string::npos) << xml;
}

TEST(XmlPersistence, ControlCharactersAndLineBreaksReadBack) {
  TempDir dir;
  std::string file = saveAwkwardRows(dir, "select * from [odd table] order by [id]");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(rs->field("first name").Value().toText(), "a'b");
  EXPECT_EQ(rs->field("xmlish").Value().toText(), "x<y>&z\"");
  EXPECT_EQ(rs->field("m").Type(), adCurrency);
  EXPECT_EQ(rs->field("m").Value().toText(), "12.3456");
  rs->MoveNext();
  EXPECT_EQ(rs->field("first name").Value().toText(), std::string("line\nbreak\x01" "ctl"));
  EXPECT_TRUE(rs->field("2nd").Value().isNull());
  EXPECT_EQ(rs->field("b").Value().toBool(), false);
}

TEST(XmlPersistence, OpenOfAMissingFileRaisesFileNotFound) {
  TempDir dir;
  auto rs = vb::Ref<Recordset>::make();
  auto e = expectVBError([&] { rs->Open(dir.file("none.xml"), vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile); });
  EXPECT_EQ(e.number(), vb::errnum::FileNotFound);
  EXPECT_EQ(rs->State(), adStateClosed);
}

TEST(XmlPersistence, OpenOfAFileInAnotherFormatRaisesAProviderError) {
  TempDir dir;
  std::string file = dir.file("junk.xml");
  std::ofstream(file) << "<xml><unclosed>";
  auto rs = vb::Ref<Recordset>::make();
  auto e = expectVBError([&] { rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  std::ofstream(file, std::ios::trunc) << "<xml/>";
  e = expectVBError([&] { rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
}

TEST(XmlPersistence, AFileWrittenByHandInTheFormatIsRead) {
  TempDir dir;
  std::string file = dir.file("hand.xml");
  std::ofstream(file) << R"(<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'
	xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'
	xmlns:rs='urn:schemas-microsoft-com:rowset'
	xmlns:z='#RowsetSchema'>
<s:Schema id='RowsetSchema'>
	<s:ElementType name='row' content='eltOnly'>
		<s:AttributeType name='CustomerID' rs:number='1'>
			<s:datatype dt:type='string' rs:dbtype='str' dt:maxLength='5' rs:fixedlength='true' rs:maybenull='false'/>
		</s:AttributeType>
		<s:AttributeType name='OrderDate' rs:number='2' rs:nullable='true'>
			<s:datatype dt:type='dateTime' rs:dbtype='variantdate' dt:maxLength='16' rs:fixedlength='true'/>
		</s:AttributeType>
		<s:AttributeType name='Freight' rs:number='3' rs:nullable='true'>
			<s:datatype dt:type='number' rs:dbtype='currency' dt:maxLength='8' rs:precision='19' rs:fixedlength='true'/>
		</s:AttributeType>
		<s:extends type='rs:rowbase'/>
	</s:ElementType>
</s:Schema>
<rs:data>
	<z:row CustomerID='VINET' OrderDate='1996-07-04T00:00:00' Freight='32.38'/>
	<z:row CustomerID='TOMSP'/>
</rs:data>
</xml>
)";
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(rs->field("CustomerID").Type(), adChar);
  EXPECT_EQ(rs->field("CustomerID").DefinedSize(), 5);
  EXPECT_EQ(rs->field("OrderDate").Type(), adDate);
  EXPECT_EQ(rs->field("OrderDate").Value().toText(), "1996-07-04 00:00:00");
  EXPECT_EQ(rs->field("Freight").Value().toText(), "32.38");
  EXPECT_EQ(rs->RecordCount(), 2);
  rs->MoveNext();
  EXPECT_TRUE(rs->field("OrderDate").Value().isNull());
  EXPECT_TRUE(rs->field("Freight").Value().isNull());
}

TEST(XmlPersistence, ARecordSetReadFromAFileCanBeSavedAgain) {
  TempDir dir;
  std::string file = saveAwkwardRows(dir, "select * from [odd table] order by [id]");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  std::string again = dir.file("again.xml");
  rs->Save(again);
  auto second = vb::Ref<Recordset>::make();
  second->Open(again, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(second->field("first name").Value().toText(), "a'b");
  EXPECT_EQ(second->field("m").Type(), adCurrency);
}

TEST(XmlPersistence, ARecordSetReadWithoutAConnectionTakesChangesInMemory) {
  TempDir dir;
  std::string file = saveAwkwardRows(dir, "select * from [odd table] order by [id]");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockOptimistic, adCmdFile);
  rs->field("first name").setValue("changed");
  rs->Update();
  EXPECT_EQ(rs->field("first name").Value().toText(), "changed");
  rs->AddNew();
  rs->field("id").setValue(int32_t{3});
  rs->Update();
  EXPECT_EQ(rs->RecordCount(), 3);
  EXPECT_EQ(rs->field("id").Value().toInt32(), 3);
  EXPECT_TRUE(rs->field("first name").Value().isNull());
  auto readOnly = vb::Ref<Recordset>::make();
  readOnly->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(expectVBError([&] { readOnly->field("id").setValue(int32_t{1}); }).number(),
            vb::errnum::NotSupported);
}

TEST(XmlPersistence, ACloneSavesTheRowsItCopied) {
  TempDir dir;
  std::string path = dir.file("db.sqlite");
  std::ofstream(path).close();
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  cn->Execute("CREATE TABLE [t] ([id] INTEGER PRIMARY KEY, [v] VARCHAR(5))");
  cn->Execute("INSERT INTO [t] VALUES (1, 'one')");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("select * from [t]", cn, adOpenDynamic, adLockOptimistic, adCmdText);
  auto copy = rs->Clone();
  cn->Execute("UPDATE [t] SET [v] = 'two'");
  std::string file = dir.file("clone.xml");
  copy->Save(file);
  auto back = vb::Ref<Recordset>::make();
  back->Open(file, cn, adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(back->field("v").Value().toText(), "one");
  EXPECT_EQ(back->field("v").DefinedSize(), 5);
}

TEST(XmlPersistence, OddSchemaNumbersAndValuesThatDoNotFitTheirTypeAreReadWithoutHarm) {
  TempDir dir;
  std::string file = dir.file("odd.xml");
  std::ofstream(file) << R"(<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'
	xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'
	xmlns:rs='urn:schemas-microsoft-com:rowset'
	xmlns:z='#RowsetSchema'>
<s:Schema id='RowsetSchema'>
	<s:ElementType name='row' content='eltOnly'>
		<s:AttributeType name='n' rs:number='abc'>
			<s:datatype dt:type='int' dt:maxLength='99999999999999' rs:precision='-4'/>
		</s:AttributeType>
		<s:AttributeType name='w' rs:number='2'>
			<s:datatype dt:type='no.such.type'/>
		</s:AttributeType>
		<s:extends type='rs:rowbase'/>
	</s:ElementType>
</s:Schema>
<rs:data>
	<z:row n='not a number' w='x' unknown='ignored'/>
	<z:row n='12'/>
</rs:data>
</xml>
)";
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(rs->field("n").Type(), adInteger);
  EXPECT_EQ(rs->field("n").DefinedSize(), INT32_MAX);
  EXPECT_EQ(rs->field("n").Value().toText(), "not a number");  // kept as written
  EXPECT_EQ(rs->field("w").Type(), adVarWChar);
  EXPECT_EQ(rs->field("w").Value().toText(), "x");
  rs->MoveNext();
  EXPECT_EQ(rs->field("n").Value().toInt32(), 12);
  EXPECT_TRUE(rs->field("w").Value().isNull());
}

namespace {

constexpr const char* kHead = R"(<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'
	xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'
	xmlns:rs='urn:schemas-microsoft-com:rowset'
	xmlns:z='#RowsetSchema'>
)";

std::string attributeType(const std::string& name, int number, const std::string& type = "int") {
  return "<s:AttributeType name='" + name + "' rs:number='" + std::to_string(number) +
         "'><s:datatype dt:type='" + type + "'/></s:AttributeType>\n";
}

std::string schema(const std::string& attributeTypes) {
  return "<s:Schema id='RowsetSchema'><s:ElementType name='row' content='eltOnly'>" +
         attributeTypes + "</s:ElementType></s:Schema>\n";
}

vb::VBError openError(const std::string& file) {
  auto rs = vb::Ref<Recordset>::make();
  return expectVBError([&] { rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile); });
}

// Saves columns (all text) with one row of values to a file and opens it again.
vb::Ref<Recordset> roundTrip(const TempDir& dir, const std::vector<std::string>& names) {
  std::vector<ado::detail::ColumnInfo> columns;
  ado::detail::Row row;
  for (size_t i = 0; i < names.size(); ++i) {
    ado::detail::ColumnInfo c;
    c.name = names[i];
    c.type = adVarWChar;
    c.definedSize = 50;
    columns.push_back(c);
    row.emplace_back("value " + std::to_string(i));
  }
  std::string file = dir.file("names" + std::to_string(names.size()) + ".xml");
  std::FILE* out = std::fopen(file.c_str(), "wb");
  ado::detail::XmlRowsetWriter writer(out, columns, false, {});
  writer.writeRow(row);
  writer.finish();
  std::fclose(out);
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  return rs;
}

}  // namespace

// A schema that declares a column after rows: the rows read before it have no value for it.
TEST(XmlPersistence, AColumnDeclaredAfterTheRowsIsRefusedWithAClearError) {
  TempDir dir;
  std::string file = dir.file("late.xml");
  std::ofstream(file) << kHead << schema(attributeType("a", 2)) << "<rs:data><z:row a='1'/><z:row a='2'/></rs:data>\n"
                      << schema(attributeType("b", 1)) << "</xml>\n";
  auto e = openError(file);
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_NE(e.description().find("a column is declared after the rows at line"), std::string::npos) << e.description();
  EXPECT_NE(e.description().find(file), std::string::npos) << e.description();

  // The same in column order: rows shorter than the schema.
  std::ofstream(file, std::ios::trunc) << kHead << schema(attributeType("a", 1)) << "<rs:data><z:row a='1'/></rs:data>\n"
                                       << schema(attributeType("b", 2)) << "</xml>\n";
  EXPECT_EQ(openError(file).number(), vb::errnum::ProviderError);

  // Rows before any schema.
  std::ofstream(file, std::ios::trunc) << kHead << "<rs:data><z:row a='1'/></rs:data>\n" << schema(attributeType("a", 1)) << "</xml>\n";
  EXPECT_EQ(openError(file).number(), vb::errnum::ProviderError);
}

TEST(XmlPersistence, RowsNameOnlyTheirDeclaredColumnsAndTheRestIsNull) {
  TempDir dir;
  std::string file = dir.file("partial.xml");
  std::ofstream(file) << kHead << schema(attributeType("b", 3) + attributeType("a", 1) + attributeType("c", 2, "string"))
                      << "<rs:data><z:row a='1' zz='9'/><z:row/><z:row c='x' b='-99999999999999999999'/></rs:data></xml>\n";
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(rs->RecordCount(), 3);
  EXPECT_EQ(rs->getFields().Item(0).Name(), "a");
  EXPECT_EQ(rs->getFields().Item(2).Name(), "b");
  EXPECT_EQ(rs->field("a").Value().toInt32(), 1);
  EXPECT_TRUE(rs->field("b").Value().isNull());
  rs->MoveNext();
  EXPECT_TRUE(rs->field("a").Value().isNull());
  rs->MoveNext();
  EXPECT_EQ(rs->field("b").Value().toText(), "-99999999999999999999");  // kept as written
  EXPECT_EQ(rs->field("c").Value().toText(), "x");
}

TEST(XmlPersistence, ValuesPastTheRangeOfTheirTypeAreKeptAsWritten) {
  TempDir dir;
  std::string file = dir.file("range.xml");
  std::ofstream(file) << kHead
                      << schema("<s:AttributeType name='m' rs:number='1'><s:datatype dt:type='number' rs:dbtype='currency'/></s:AttributeType>"
                                "<s:AttributeType name='d' rs:number='2'><s:datatype dt:type='dateTime'/></s:AttributeType>"
                                "<s:AttributeType name='f' rs:number='3'><s:datatype dt:type='r4'/></s:AttributeType>")
                      << "<rs:data><z:row m='922337203685477.9999' d='99999999999-01-01T00:00:00' f='1e300'/>"
                         "<z:row m='-922337203685477.5808' d='2024-02-03T04:05:06' f='2.5'/></rs:data></xml>\n";
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(file, vb::Ref<Connection>(), adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(rs->field("m").Value().type(), vb::VarType::String);
  EXPECT_EQ(rs->field("m").Value().toText(), "922337203685477.9999");
  EXPECT_EQ(rs->field("d").Value().toText(), "99999999999-01-01T00:00:00");
  EXPECT_EQ(rs->field("f").Value().toText(), "1e300");
  rs->MoveNext();
  EXPECT_EQ(rs->field("m").Value().type(), vb::VarType::Currency);
  EXPECT_EQ(rs->field("m").Value().toText(), "-922337203685477.5808");
  EXPECT_EQ(rs->field("d").Value().toText(), "2024-02-03 04:05:06");
  EXPECT_EQ(rs->field("f").Value().toText(), "2.5");
}

// Names that are no XML names are written as generated ones with the name in rs:name; every
// name reads back as it was.
TEST(XmlPersistence, AnyColumnNameReadsBackAsItWasSaved) {
  TempDir dir;
  std::vector<std::string> names = {"\xC3\x97",                 // ×: not a name character
                                    "a\xF0\x9F\x98\x80" "b",    // outside the Basic Multilingual Plane
                                    "c1",                       // the name generated for a later column
                                    "a b",
                                    "",
                                    "Gr\xC3\xBC\xC3\x9F" "e",  // a name as it is
                                    "c1",                       // the same name twice
                                    "x:y",
                                    "-",
                                    "\xE5\x90\x8D\xE5\x89\x8D",
                                    "XMLdata",
                                    "tab\there",
                                    "c2"};
  auto rs = roundTrip(dir, names);
  ASSERT_EQ(rs->getFields().Count(), static_cast<int32_t>(names.size()));
  for (size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(rs->getFields().Item(static_cast<int32_t>(i)).Name(), names[i]) << i;
    EXPECT_EQ(rs->getFields().Item(static_cast<int32_t>(i)).Value().toText(), "value " + std::to_string(i)) << i;
  }
  std::string xml = readFile(dir.file("names13.xml"));
  EXPECT_NE(xml.find("name='c0' rs:name='\xC3\x97'"), std::string::npos) << xml;
  EXPECT_NE(xml.find("name='Gr\xC3\xBC\xC3\x9F" "e'"), std::string::npos) << xml;
}

TEST(XmlPersistence, ColumnNamesThatAreNoXmlNamesSurviveSaveAndOpenFromAnEngine) {
  TempDir dir;
  std::string path = dir.file("db.sqlite");
  std::ofstream(path).close();
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  cn->Execute("CREATE TABLE [t] ([id] INTEGER PRIMARY KEY, [\xC3\x97] VARCHAR(5), [\xF0\x9F\x98\x80] VARCHAR(5))");
  cn->Execute("INSERT INTO [t] VALUES (1, 'x', 'y')");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("select * from [t]", cn, adOpenStatic, adLockOptimistic, adCmdText);
  std::string file = dir.file("rollback ORIGINAL.xml");
  rs->Save(file);
  auto back = vb::Ref<Recordset>::make();
  back->Open(file, cn, adOpenStatic, adLockReadOnly, adCmdFile);
  EXPECT_EQ(back->field("\xC3\x97").Value().toText(), "x");
  EXPECT_EQ(back->field("\xF0\x9F\x98\x80").Value().toText(), "y");
}
