// Host data hung on gestures and sets: the default block of bytes through the flat functions,
// and its stream form in the middle of other text.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "zando/zando.h"

namespace {

TEST(DefaultMetadata, BytesThroughTheFlatFunctions) {
  void* m = GestureRecognition_createDefaultMetadata();
  ASSERT_NE(m, nullptr);
  char buffer[8] = {};
  EXPECT_EQ(GestureRecognition_getDefaultMetadataSize(m), 0);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataData(m, buffer, 8), 0);
  EXPECT_EQ(GestureRecognition_setDefaultMetadataData(m, "abcde", 5), 0);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataSize(m), 5);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataData(m, buffer, 3), 3);
  EXPECT_EQ(std::string(buffer, 3), "abc");
  EXPECT_EQ(buffer[3], '\0');
  EXPECT_EQ(GestureRecognition_setDefaultMetadataData(m, nullptr, 5), 0);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataSize(m), 0);
  GestureRecognition_deleteDefaultMetadata(m);
  GestureRecognition_deleteDefaultMetadata(nullptr);

  GestureRecognition_MetadataCreatorFunction create = GestureRecognition_getDefaultMetadataCreatorFunction();
  ASSERT_NE(create, nullptr);
  IGestureRecognition::Metadata* made = create();
  EXPECT_NE(dynamic_cast<IGestureRecognition::DefaultMetadata*>(made), nullptr);
  delete made;
}

TEST(DefaultMetadata, StreamBlockStopsExactlyAtItsEnd) {
  IGestureRecognition::DefaultMetadata written;
  const std::string bytes("a b\0c\r\nd", 8);
  ASSERT_EQ(written.setData(bytes.data(), static_cast<int>(bytes.size())), 0);
  std::stringstream stream;
  stream << "before\n";
  ASSERT_TRUE(written.writeToStream(stream));
  stream << "after\n";
  EXPECT_EQ(stream.str(), std::string("before\n8 ") + bytes + "after\n");

  std::string line;
  std::getline(stream, line);
  IGestureRecognition::DefaultMetadata read;
  ASSERT_TRUE(read.readFromStream(stream));
  ASSERT_EQ(read.size, 8);
  EXPECT_EQ(std::string(static_cast<const char*>(read.data), 8), bytes);
  std::getline(stream, line);
  EXPECT_EQ(line, "after");
}

TEST(DefaultMetadata, EmptyAndDamagedBlocksReadAsFailure) {
  IGestureRecognition::DefaultMetadata empty;
  std::stringstream stream;
  ASSERT_TRUE(empty.writeToStream(stream));
  EXPECT_EQ(stream.str(), "0 ");
  IGestureRecognition::DefaultMetadata read;
  read.setData("xy", 2);
  EXPECT_FALSE(read.readFromStream(stream));
  EXPECT_EQ(read.size, 0);
  EXPECT_EQ(read.data, nullptr);

  // A count larger than what follows: the block is dropped, without a huge allocation.
  std::istringstream shortInput("2000000000 abc");
  EXPECT_FALSE(read.readFromStream(shortInput));
  EXPECT_EQ(read.size, 0);
  // No blank within 32 characters.
  std::istringstream noBlank(std::string(40, '7'));
  EXPECT_FALSE(read.readFromStream(noBlank));
  EXPECT_EQ(read.size, 0);
}

TEST(DefaultMetadata, RecognizersKeepButNeverOwnMetadata) {
  void* gro = GestureRecognition_create();
  void* m = GestureRecognition_createDefaultMetadata();
  GestureRecognition_setDefaultMetadataData(m, "keep", 4);
  EXPECT_EQ(GestureRecognition_setMetadata(gro, m), 0);
  EXPECT_EQ(GestureRecognition_getMetadata(gro), m);
  ASSERT_EQ(GestureRecognition_createGesture(gro, "g", m), 0);
  EXPECT_EQ(GestureRecognition_getGestureMetadata(gro, 0), m);
  EXPECT_EQ(GestureRecognition_deleteGesture(gro, 0), 0);
  EXPECT_EQ(GestureRecognition_setMetadata(gro, nullptr), 0);
  EXPECT_EQ(GestureRecognition_getMetadata(gro), nullptr);
  GestureRecognition_delete(gro);
  char buffer[4];
  EXPECT_EQ(GestureRecognition_getDefaultMetadataData(m, buffer, 4), 4);
  EXPECT_EQ(std::string(buffer, 4), "keep");
  GestureRecognition_deleteDefaultMetadata(m);
}

}  // namespace
