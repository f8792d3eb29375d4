#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

#include "ztimporter/adimporter.h"

namespace {

// What a caller adds to the importer.
class CountingImporter : public AdImporter {
  public:
    explicit CountingImporter(int& destroyed) : m_destroyed(destroyed) {}
    ~CountingImporter() override { ++m_destroyed; }

    Obx_String Import(const char16_t* packet) {
        ++m_packets;
        return AdImporter::Import(Obx_String(packet).Units());
    }

    int Packets() const { return m_packets; }

  private:
    int& m_destroyed;
    int m_packets = 0;
};

}  // namespace

TEST(ImporterLibrary, GivesCallersAnImporterToHold) {
    AdImporter importer;
    importer.SetSession(nullptr);
    EXPECT_FALSE(importer.Import(nullptr).IsEmpty());
}

TEST(ImporterLibrary, LetsCallersDeriveFromTheImporter) {
    int destroyed = 0;
    {
        CountingImporter importer(destroyed);
        EXPECT_FALSE(importer.Import(u"<records/>").IsEmpty());
        EXPECT_EQ(importer.Packets(), 1);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(ImporterLibrary, DestroysADerivedImporterThroughItsBases) {
    int destroyed = 0;
    std::unique_ptr<CObject>(new CountingImporter(destroyed)).reset();
    EXPECT_EQ(destroyed, 1);
    std::unique_ptr<Obx_Object>(new CountingImporter(destroyed)).reset();
    EXPECT_EQ(destroyed, 2);
}

TEST(ImporterLibrary, TellsAnImporterByItsType) {
    const std::unique_ptr<CObject> object = std::make_unique<AdImporter>();
    EXPECT_NE(dynamic_cast<const AdImporter*>(object.get()), nullptr);
    EXPECT_EQ(dynamic_cast<const CountingImporter*>(object.get()), nullptr);
    const CObject& any = *object;
    EXPECT_EQ(typeid(any), typeid(AdImporter));
}

TEST(ImporterLibrary, HasVersionHooksToLookUpByName) {
    EXPECT_NE(dlsym(RTLD_DEFAULT, "libztimporter_print_verid"), nullptr);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "libztimporter_sprintf_verid"), nullptr);
}
