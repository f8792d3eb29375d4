#include <gtest/gtest.h>

#include <cstdlib>
#include <list>
#include <new>
#include <string>

#include "ztimporter/adimporter.h"
#include "ztimporter/importconfigurationparser.h"
#include "ztimporter/importrecordparser.h"

namespace {

// How many objects are on the heap, and how many more may be made before one fails; negative for no
// limit.
long g_objects = 0;
long g_allowed = -1;

void* Allocate(std::size_t size) {
    if (g_allowed == 0) {
        throw std::bad_alloc();
    }
    if (g_allowed > 0) {
        --g_allowed;
    }
    void* object = std::malloc(size == 0 ? 1 : size);
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    ++g_objects;
    return object;
}

void Free(void* object) {
    if (object != nullptr) {
        --g_objects;
        std::free(object);
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void operator delete(void* object) noexcept {
    Free(object);
}
void operator delete(void* object, std::size_t /*size*/) noexcept {
    Free(object);
}
void operator delete[](void* object) noexcept {
    Free(object);
}
void operator delete[](void* object, std::size_t /*size*/) noexcept {
    Free(object);
}

namespace {

// Runs the work again and again, each time with memory for one object more, until it succeeds. Each
// failure must arrive as std::bad_alloc and leave nothing behind. Returns how often it failed.
template <typename Work>
int FailAtEachAllocation(Work work) {
    // Whatever is made once and kept is made here.
    work();
    for (int failures = 0;; ++failures) {
        const long before = g_objects;
        bool failed = false;
        g_allowed = failures;
        try {
            work();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        g_allowed = -1;
        EXPECT_EQ(g_objects, before) << "after " << failures << " objects";
        if (!failed || g_objects != before) {
            return failures;
        }
    }
}

const char* const kPacket =
    "<record><field name='the_first_of_the_fields'>a value too long for a short string</field>"
    "<field name='b'/><field name='c'>  <![CDATA[ &amp; ]]> text of some length</field></record>";

TEST(OutOfMemory, LeavesNothingOfARecord) {
    EXPECT_GT(FailAtEachAllocation([] {
                  AdImportRecordParser parser;
                  parser.SetInputData(kPacket);
                  CMapStringToString map(10);
                  if (parser.NextRecord() != 0) {
                      parser.GetRecordMap(map);
                  }
              }),
              20);
}

TEST(OutOfMemory, LeavesNothingOfAConfiguration) {
    EXPECT_GT(FailAtEachAllocation([] {
                  AdImportConfigurationDataParser parser;
                  parser.SetInputData(
                      "<configuration><record_type name='a_record_type'/><list>"
                      "<mapping target_field='a_target_field' reference_field='a_reference_field'/>"
                      "</list></configuration>");
                  CMapStringToString map(10);
                  parser.GetRecordType();
                  parser.GetReferenceMapping(u"list", map);
              }),
              20);
}

void DeleteAll(const std::list<CMapStringToString*>& entries) {
    for (const CMapStringToString* entry : entries) {
        delete entry;
    }
}

TEST(OutOfMemory, LeavesNothingOfHistoryEntries) {
    EXPECT_GT(FailAtEachAllocation([] {
                  DeleteAll(AdImportRecordParser().ExtractHistoryData(
                      u"1\t2020-01-02 03:04:05\tann\n2\n\n3\t2020-01-02 03:04:05\tbob"));
              }),
              10);
}

TEST(OutOfMemory, LeavesNothingOfAttachmentEntries) {
    EXPECT_GT(FailAtEachAllocation([] {
                  DeleteAll(AdImportRecordParser().ExtractAttachmentData(
                      u"1\na_file.txt\n10\na description\n2\nanother_file.txt\n20"));
              }),
              10);
}

// Nothing can be imported without a session, so that every end has its error text.
void ExpectAnErrorTextAtEachAllocation(const char16_t* packet) {
    const Obx_String units(packet);
    AdImporter importer;
    const Obx_String withMemory = importer.Import(units.Units());
    Obx_String error;
    for (int objects = 0; objects < 10000 && error != withMemory; ++objects) {
        g_allowed = objects;
        EXPECT_NO_THROW(error = importer.Import(units.Units()));
        g_allowed = -1;
        EXPECT_FALSE(error.IsEmpty()) << "after " << objects << " objects";
    }
    EXPECT_EQ(error, withMemory);
}

TEST(OutOfMemory, EndsAConfigurationPacketWithAnErrorText) {
    ExpectAnErrorTextAtEachAllocation(u"<configuration><record_type name='bug'/></configuration>");
}

TEST(OutOfMemory, EndsADataPacketWithAnErrorText) {
    ExpectAnErrorTextAtEachAllocation(u"<record><field name='title'>Crash</field></record>");
}

}  // namespace
