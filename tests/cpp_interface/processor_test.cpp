#include <gtest/gtest.h>

#include <set>

#include "nerova_zel/polarization_processor.hpp"

namespace nerova_zel::test {
namespace {

/** Functions that count, in place of the library's. */
struct Counts {
  int initialized = 0;  ///< minus terminated
  int processors = 0;
  int transforms = 0;
  std::int32_t creation = 0;  ///< what create returns
};

Counts counts;

std::int32_t NV_POLARIZATION_PROCESSOR_CALL initialize() {
  ++counts.initialized;
  return 0;
}

std::int32_t NV_POLARIZATION_PROCESSOR_CALL terminate() {
  --counts.initialized;
  EXPECT_GE(counts.initialized, counts.processors) << "terminated before destroyed";
  return 0;
}

std::int32_t NV_POLARIZATION_PROCESSOR_CALL create(nv_polarization_processor** processor) {
  if (counts.creation == 0) {
    ++counts.processors;
    *processor = reinterpret_cast<nv_polarization_processor*>(&counts);
  }
  return counts.creation;
}

std::int32_t NV_POLARIZATION_PROCESSOR_CALL destroy(nv_polarization_processor* /*processor*/) {
  --counts.processors;
  return 0;
}

std::int32_t NV_POLARIZATION_PROCESSOR_CALL
transform(nv_polarization_processor* /*processor*/, std::int32_t /*phase*/, const std::uint16_t* /*input*/,
          std::int32_t /*origin_x*/, std::int32_t /*origin_y*/, std::int32_t /*width*/, std::int32_t /*height*/,
          std::int32_t /*bit_depth*/, std::uint16_t /*output_maximum*/, float* /*normalized_stokes*/,
          std::uint16_t* /*total_power*/, std::uint16_t* /*horizontal_vertical*/, std::uint16_t* /*diagonal*/,
          std::uint16_t* /*azimuth*/, std::uint16_t* /*degree_of_linear_polarization*/) {
  ++counts.transforms;
  return 0;
}

EntryPoints counting_functions() {
  counts = {};
  EntryPoints functions = linked_entry_points();
  functions.module_initialize = &initialize;
  functions.module_terminate = &terminate;
  functions.create = &create;
  functions.destroy = &destroy;
  functions.transform = &transform;
  return functions;
}

template <class Action>
std::int32_t code_of(const Action& action) {
  try {
    action();
  } catch (const ProcessorError& error) {
    return error.code();
  }
  return 0;
}

TEST(CppInterface, EachProcessorHoldsOneCountHoweverItIsMoved) {
  const EntryPoints functions = counting_functions();
  {
    std::vector<Processor> processors;
    for (int i = 1; i <= 5; ++i) {  // the vector moves its elements as it grows
      processors.emplace_back(functions);
      EXPECT_EQ(counts.initialized, i);
      EXPECT_EQ(counts.processors, i);
    }
    Processor taken = std::move(processors[1]);
    taken = std::move(processors[2]);
    Processor& same = taken;
    taken = std::move(same);
    EXPECT_EQ(counts.initialized, 4);
    EXPECT_EQ(counts.processors, 4);
    processors[2] = Processor(functions);  // a moved-from object can be used again
    EXPECT_EQ(counts.processors, 5);
  }
  EXPECT_EQ(counts.initialized, 0);
  EXPECT_EQ(counts.processors, 0);
}

TEST(CppInterface, AFailedCreationTakesItsCountBack) {
  const EntryPoints functions = counting_functions();
  counts.creation = NV_POLARIZATION_PROCESSOR_ERROR_OUT_OF_MEMORY;
  EXPECT_EQ(code_of([&] { const Processor processor(functions); }), NV_POLARIZATION_PROCESSOR_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(counts.initialized, 0);
}

/** A frame of 3 x 2 with every output in a vector. */
struct Images {
  std::vector<std::uint16_t> pixels = {10, 200, 30, 140, 250, 60};
  std::vector<float> stokes = std::vector<float>(12);
  std::array<std::vector<std::uint16_t>, 5> others;

  Images() { others.fill(std::vector<std::uint16_t>(6)); }

  Frame frame() const {
    Frame frame;
    frame.pixels = pixels;
    frame.width = 3;
    frame.height = 2;
    frame.origin_x = 1;
    frame.phase = Phase::degrees_45;
    frame.bit_depth = 8;
    return frame;
  }

  Outputs outputs() {
    Outputs outputs;
    outputs.normalized_stokes = stokes;
    outputs.total_power = others[0];
    outputs.horizontal_vertical = others[1];
    outputs.diagonal = others[2];
    outputs.azimuth = others[3];
    outputs.degree_of_linear_polarization = others[4];
    outputs.output_maximum = 1000;
    return outputs;
  }
};

TEST(CppInterface, VectorsOfTheWrongSizeAreRefusedBeforeTheCall) {
  const Processor processor(counting_functions());
  Images images;
  std::vector<std::vector<std::uint16_t>*> vectors = {&images.pixels};
  for (auto& image : images.others) {
    vectors.push_back(&image);
  }
  const auto attempt = [&] { processor.transform(images.frame(), images.outputs()); };
  std::set<std::string> sentences;
  for (auto* vector : vectors) {
    for (const std::size_t size : {0U, 5U, 7U}) {
      vector->resize(size);
      EXPECT_EQ(code_of(attempt), buffer_size_error) << size;
    }
    try {
      attempt();
    } catch (const ProcessorError& error) {
      sentences.insert(error.what());
    }
    vector->resize(6);
  }
  EXPECT_EQ(sentences.size(), vectors.size()) << "each buffer by its name";
  images.stokes.resize(6);
  EXPECT_EQ(code_of(attempt), buffer_size_error);
  EXPECT_EQ(counts.transforms, 0);
  images.stokes.resize(12);
  EXPECT_EQ(code_of(attempt), 0);
  EXPECT_EQ(counts.transforms, 1);
}

TEST(CppInterface, EveryCodeHasItsOwnText) {
  std::set<std::string> texts;
  for (std::int32_t code = -1; code <= NV_POLARIZATION_PROCESSOR_ERROR_BIT_DEPTH + 1; ++code) {
    if (code != 0) {
      texts.insert(error_text(code));
    }
  }
  EXPECT_EQ(texts.size(), 15U);
}

TEST(CppInterface, AMovedFromProcessorThrows) {
  Processor processor;
  { const Processor taken = std::move(processor); }
  Images images;
  // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what happens then is the question
  EXPECT_EQ(code_of([&] { processor.transform(images.frame(), images.outputs()); }),
            NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE);
  EXPECT_EQ(code_of([&] { processor.set_calibration({}); }), NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE);
  EXPECT_EQ(code_of([&] { processor.calibration(); }), NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE);
  // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

TEST(CppInterface, PassesEveryArgumentToItsPlace) {
  Images by_name;
  const Processor processor;
  processor.transform(by_name.frame(), by_name.outputs());

  Images by_position;
  nv_polarization_processor* handle = nullptr;
  ASSERT_EQ(nv_polarization_processor_create_polarization_processor(&handle), 0) << "the count of `processor` serves";
  EXPECT_EQ(nv_polarization_processor_transform(handle, 1, by_position.pixels.data(), 1, 0, 3, 2, 8, 1000,
                                                by_position.stokes.data(), by_position.others[0].data(),
                                                by_position.others[1].data(), by_position.others[2].data(),
                                                by_position.others[3].data(), by_position.others[4].data()),
            0);
  nv_polarization_processor_destroy_polarization_processor(handle);
  EXPECT_EQ(by_name.stokes, by_position.stokes);
  EXPECT_EQ(by_name.others, by_position.others);
  EXPECT_EQ((std::set<std::vector<std::uint16_t>>(by_name.others.begin(), by_name.others.end()).size()), 5U);

  Frame frame = by_name.frame();
  frame.height = 1;
  EXPECT_EQ(code_of([&] { processor.transform(frame, by_name.outputs()); }), NV_POLARIZATION_PROCESSOR_ERROR_HEIGHT);
}

TEST(CppInterface, KeepsTheCalibrationInOrder) {
  Processor processor;
  Calibration matrices{};
  float value = 0;
  for (CalibrationMatrix& matrix : matrices) {
    for (float& weight : matrix) {
      weight = ++value;
    }
  }
  EXPECT_NE(processor.calibration(), matrices);
  processor.set_calibration(matrices);
  EXPECT_EQ(processor.calibration(), matrices);
}

}  // namespace
}  // namespace nerova_zel::test
