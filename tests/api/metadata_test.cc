// Host data hung on gestures and sets: the default block of bytes through the flat functions,
// and its stream form in the middle of other text.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "zando/zando.h"

namespace {

TEST(DefaultMetadata, BytesThroughTheFlatFunctionsStayTheCallers) {
  void* m = GestureRecognition_createDefaultMetadata();
  char buffer[8] = {};
  EXPECT_EQ(GestureRecognition_getDefaultMetadataData(m, buffer, 8), 0);
  EXPECT_EQ(GestureRecognition_setDefaultMetadataData(m, "abcde", 5), 0);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataSize(m), 5);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataData(m, buffer, 3), 3);
  EXPECT_EQ(std::string(buffer, 4), std::string("abc\0", 4));
  EXPECT_EQ(GestureRecognition_setDefaultMetadataData(m, nullptr, 5), 0);
  EXPECT_EQ(GestureRecognition_getDefaultMetadataSize(m), 0);

  // Recognisers keep the pointer but never own it, through deletes of gestures and of themselves.
  GestureRecognition_setDefaultMetadataData(m, "keep", 4);
  void* gro = GestureRecognition_create();
  EXPECT_EQ(GestureRecognition_setMetadata(gro, m), 0);
  EXPECT_EQ(GestureRecognition_getMetadata(gro), m);
  ASSERT_EQ(GestureRecognition_createGesture(gro, "g", m), 0);
  EXPECT_EQ(GestureRecognition_getGestureMetadata(gro, 0), m);
  EXPECT_EQ(GestureRecognition_deleteGesture(gro, 0), 0);
  GestureRecognition_delete(gro);  // still holding the block as the set's
  EXPECT_EQ(GestureRecognition_getDefaultMetadataData(m, buffer, 8), 4);
  EXPECT_EQ(std::string(buffer, 4), "keep");
  GestureRecognition_deleteDefaultMetadata(m);
  GestureRecognition_deleteDefaultMetadata(nullptr);

  IGestureRecognition::Metadata* made = GestureRecognition_getDefaultMetadataCreatorFunction()();
  EXPECT_NE(dynamic_cast<IGestureRecognition::DefaultMetadata*>(made), nullptr);
  delete made;
}

TEST(DefaultMetadata, StreamBlockStopsExactlyAtItsEndOrFails) {
  IGestureRecognition::DefaultMetadata written, read;
  const std::string bytes("a b\0c\r\nd", 8);
  ASSERT_EQ(written.setData(bytes.data(), static_cast<int>(bytes.size())), 0);
  std::stringstream stream;
  stream << "before\n";
  ASSERT_TRUE(written.writeToStream(stream));
  stream << "after\n";
  EXPECT_EQ(stream.str(), "before\n8 " + bytes + "after\n");
  std::string line;
  std::getline(stream, line);
  ASSERT_TRUE(read.readFromStream(stream));
  EXPECT_EQ(std::string(static_cast<const char*>(read.data), static_cast<size_t>(read.size)), bytes);
  std::getline(stream, line);
  EXPECT_EQ(line, "after");

  // An empty block reads back as a failure, and so do damaged ones.
  IGestureRecognition::DefaultMetadata empty;
  std::stringstream emptyBlock;
  ASSERT_TRUE(empty.writeToStream(emptyBlock));
  EXPECT_EQ(emptyBlock.str(), "0 ");
  // A count past what follows is dropped without a huge allocation; no blank within 32
  // characters is no count at all.
  std::istringstream shortInput("2000000000 abc"), noBlank(std::string(40, '7'));
  std::istream* inputs[] = {&emptyBlock, &shortInput, &noBlank};
  for (std::istream* input : inputs) {
    read.setData("xy", 2);
    EXPECT_FALSE(read.readFromStream(*input));
    EXPECT_EQ(read.size, 0);
    EXPECT_EQ(read.data, nullptr);
  }
}

}  // namespace
