/**
 * @file polarization_processor.h
 * @brief Turns raw frames of a polarization camera into images of polarization.
 *
 * Self-contained C99. The library exports exactly the seven functions below, by their plain names.
 *
 * Order of use: module_initialize, create, any number of transforms, destroy, module_terminate.
 *
 * Calling convention: C (cdecl on 32-bit x86). No structure crosses this interface, so structure packing options of
 * the caller do not matter. The stack may be aligned to 4 bytes on 32-bit x86.
 *
 * Images are row-major and tightly packed: pixel (x, y), column x from the left and row y from the top, is element
 * y * width + x. Image buffers belong to the caller, are never allocated, kept or freed by the library, need no more
 * than the alignment of their element type, and must not overlap one another.
 *
 * Floating-point environment: transform masks exceptions and keeps denormal numbers while it runs, so that
 * flush-to-zero, denormals-are-zero and unmasked exceptions of the caller do not affect its results or behaviour;
 * settings and flags are the caller's own again when it returns. It never changes the rounding mode, and results are
 * defined for round to nearest.
 *
 * Cancellation: a thread that is cancelled (pthread_cancel) in one of these functions is cancelled after it has
 * returned; with asynchronous cancellation, as it returns, so that its result is lost.
 */
#ifndef NEROVA_ZEL_POLARIZATION_PROCESSOR_H
#define NEROVA_ZEL_POLARIZATION_PROCESSOR_H

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C callers have no <cstdint> */

/**
 * The version of this header. A library states its own in its file: a DLL in its version resource, an ELF file in a
 * note (readelf -n), owner "NerovaZel", type 1, a zero-terminated text like this one.
 */
#define NEROVA_ZEL_POLARIZATION_PROCESSOR_VERSION "0.1.0"

#if defined(_WIN32)
#define NV_POLARIZATION_PROCESSOR_CALL __cdecl
#else
#define NV_POLARIZATION_PROCESSOR_CALL
#endif

#if defined(NV_POLARIZATION_PROCESSOR_BUILDING) && !defined(_WIN32)
#define NV_POLARIZATION_PROCESSOR_API __attribute__((visibility("default")))
#elif defined(_WIN32) && !defined(NV_POLARIZATION_PROCESSOR_BUILDING)
#define NV_POLARIZATION_PROCESSOR_API __declspec(dllimport)
#else
#define NV_POLARIZATION_PROCESSOR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A processor: four calibration matrices and the computation route chosen for this computer. Opaque. */
typedef struct nv_polarization_processor nv_polarization_processor; /* NOLINT(modernize-use-using) */

/** Result of every function. Tests are made in a fixed order; the first that fails decides the code. */
enum nv_polarization_processor_error {
  NV_POLARIZATION_PROCESSOR_SUCCESS = 0,
  /** The processor (CPU) lacks SSE, or creation failed for an unknown reason. */
  NV_POLARIZATION_PROCESSOR_ERROR_CREATION_FAILED = 1,
  /** No module_initialize is in force. */
  NV_POLARIZATION_PROCESSOR_ERROR_NOT_INITIALIZED = 2,
  NV_POLARIZATION_PROCESSOR_ERROR_OUT_OF_MEMORY = 3,
  NV_POLARIZATION_PROCESSOR_ERROR_NULL_HANDLE = 4,
  NV_POLARIZATION_PROCESSOR_ERROR_NULL_INPUT = 5,
  /** All six output pointers are NULL. */
  NV_POLARIZATION_PROCESSOR_ERROR_NO_OUTPUT = 6,
  NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_IS_INPUT = 7,
  NV_POLARIZATION_PROCESSOR_ERROR_OUTPUTS_EQUAL = 8,
  /** The phase is 4 or greater. */
  NV_POLARIZATION_PROCESSOR_ERROR_PHASE = 9,
  /** The output maximum is 0. */
  NV_POLARIZATION_PROCESSOR_ERROR_OUTPUT_MAXIMUM = 10,
  /** The width is less than 2. */
  NV_POLARIZATION_PROCESSOR_ERROR_WIDTH = 11,
  /** The height is less than 2. */
  NV_POLARIZATION_PROCESSOR_ERROR_HEIGHT = 12,
  /** The bit depth is negative or greater than 16. */
  NV_POLARIZATION_PROCESSOR_ERROR_BIT_DEPTH = 13
};

/**
 * Polarizer angle of the frame's top-left pixel when the frame's origin lies at even sensor coordinates. The whole
 * 2 x 2 super-pixel follows from it, in degrees [top-left, top-right / bottom-left, bottom-right]:
 * phase 0 [0, 135 / 45, 90], phase 1 [45, 90 / 0, 135], phase 2 [90, 45 / 135, 0], phase 3 [135, 0 / 90, 45].
 */
enum nv_polarization_processor_phase {
  NV_POLARIZATION_PROCESSOR_PHASE_0_DEGREES = 0,
  NV_POLARIZATION_PROCESSOR_PHASE_45_DEGREES = 1,
  NV_POLARIZATION_PROCESSOR_PHASE_90_DEGREES = 2,
  NV_POLARIZATION_PROCESSOR_PHASE_135_DEGREES = 3
};

/**
 * Makes the library ready for use. Calls are counted: each needs a matching module_terminate. The one that raises the
 * count from 0 binds the optional logger library; the library works silently without it. On Windows a program that
 * keeps the companions outside its own folder calls SetDllDirectory before.
 *
 * @return 0 always. Should memory run out while the count is raised from 0, the other functions return 2 until it has
 *         fallen to 0 and module_initialize is called again.
 * Thread safety: serialised with module_initialize and module_terminate.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL nv_polarization_processor_module_initialize(void);

/**
 * Takes back one module_initialize. The last one releases the logger library; from then on the other functions return
 * 2, also for processors not yet destroyed, which work again (and can be destroyed) after the next module_initialize.
 * A call too many does nothing.
 *
 * @return 0 always.
 * Thread safety: serialised with module_initialize and module_terminate; the last one must not run while another
 * function of the library does.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL nv_polarization_processor_module_terminate(void);

/**
 * Creates a processor with the default calibration matrices and loads the vector plugins, where present.
 *
 * @param processor receives the new processor, owned by the caller and released by destroy; must not be NULL, which is
 *        not checked; written on success only.
 * @return 0; 1 (CPU without SSE, or unknown failure); 2 (not initialized); 3 (out of memory).
 * Thread safety: may be called from any thread, also at the same time.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL
nv_polarization_processor_create_polarization_processor(nv_polarization_processor** processor);

/**
 * Destroys a processor and unloads its vector plugins.
 *
 * @param processor a processor from create, not used by any thread any more; NULL is an error.
 * @return 0; 2 (not initialized: nothing is destroyed); 4 (NULL handle).
 * Thread safety: different processors may be destroyed at the same time.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL
nv_polarization_processor_destroy_polarization_processor(nv_polarization_processor* processor);

/**
 * Replaces calibration matrices. A matrix is 16 floats, 4 x 4 by rows: row 0 gives the sum of the intensities (twice
 * the power), row 1 the horizontal/vertical difference S1, row 2 the diagonal difference S2; row 3 is kept but never
 * read. Columns weigh the pixel itself, its horizontal, its vertical and its diagonal neighbour. Matrix m serves the
 * pixels that lie under the polarizer at 45 * m degrees; but in a frame with exactly one odd side the bottom-right
 * pixel takes matrix 0. Values are copied bit for bit and not checked.
 *
 * Which pixels use the matrices depends on the route: with a vector plugin all do, with the built-in kernels only
 * those of the last columns and rows; the rest keeps the default calibration.
 *
 * @param processor a processor from create; NULL is an error.
 * @param matrix_0,matrix_1,matrix_2,matrix_3 16 floats each (64 bytes, any alignment), or NULL to keep that matrix.
 * @return 0; 2 (not initialized); 4 (NULL handle).
 * Thread safety: must not run while another thread uses the same processor.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL
nv_polarization_processor_set_custom_calibration_coefficients(nv_polarization_processor* processor,
                                                              const float* matrix_0, const float* matrix_1,
                                                              const float* matrix_2, const float* matrix_3);

/**
 * Copies the calibration matrices out; form and order as in set.
 *
 * @param processor a processor from create; NULL is an error.
 * @param matrix_0,matrix_1,matrix_2,matrix_3 room for 16 floats each (64 bytes, any alignment), or NULL to skip it.
 * @return 0; 2 (not initialized); 4 (NULL handle).
 * Thread safety: must not run while another thread changes the matrices of the same processor.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL
nv_polarization_processor_get_custom_calibration_coefficients(nv_polarization_processor* processor, float* matrix_0,
                                                              float* matrix_1, float* matrix_2, float* matrix_3);

/**
 * Computes up to six images of one frame. With I0, I45, I90, I135 the samples under the four polarizers in the 2 x 2
 * neighbourhood that starts at a pixel (mirrored inwards in the last column and row), and the default calibration:
 * P = (I0 + I45 + I90 + I135) / 2, S1 = I0 - I90, S2 = I45 - I135 (the linear Stokes parameters; D. H. Goldstein,
 * "Polarized Light", CRC Press).
 *
 * Each output is optional (NULL). 16-bit outputs are clamped to 0..output_maximum (NaN becomes output_maximum) and
 * rounded to nearest, ties to even. Nothing is written on an error.
 *
 * @param processor a processor from create; NULL is an error.
 * @param phase polarizer angle of the top-left pixel for an origin at even coordinates, see
 *        nv_polarization_processor_phase; a negative phase counts as 0.
 * @param input width * height pixels, unsigned 16-bit, read only.
 * @param origin_x,origin_y sensor coordinates of the frame's top-left pixel; only their parity matters. A negative odd
 *        coordinate counts as if both coordinates were odd.
 * @param width columns, at least 2.
 * @param height rows, at least 2.
 * @param bit_depth significant bits of an input pixel, 0 to 16; full scale is 2^bit_depth - 1.
 * @param output_maximum 1 to 65535, what full scale maps to in the 16-bit outputs.
 * @param normalized_stokes 2 * width * height floats: S1 / P at element 2 * (y * width + x), S2 / P at the next;
 *        infinite or NaN where P is 0.
 * @param total_power width * height pixels: P * output_maximum / full scale.
 * @param horizontal_vertical width * height pixels: S1 * output_maximum / full scale; 0 where S1 is negative.
 * @param diagonal width * height pixels: S2 * output_maximum / full scale; 0 where S2 is negative.
 * @param azimuth width * height pixels: angle of linear polarization, atan2(S2, S1) / 2 in -90..+90 degrees plus 90
 *        degrees, where 180 degrees map to output_maximum; within 0.16 degrees before rounding.
 * @param degree_of_linear_polarization width * height pixels: sqrt(S1^2 + S2^2) / P, where 1 maps to output_maximum;
 *        0 where P is 0.
 * @return 0; 2 (not initialized); 4 (NULL handle); 9 (phase above 3); 5 (NULL input); 6 (no output); 7 (an output is
 *         the input); 8 (two outputs are equal); 11 (width); 12 (height); 10 (output maximum 0); 13 (bit depth); tested
 *         in this order.
 * Thread safety: any number of calls at the same time, also on one processor, as long as nobody changes its matrices.
 */
NV_POLARIZATION_PROCESSOR_API int32_t NV_POLARIZATION_PROCESSOR_CALL nv_polarization_processor_transform(
    nv_polarization_processor* processor, int32_t phase, const uint16_t* input, int32_t origin_x, int32_t origin_y,
    int32_t width, int32_t height, int32_t bit_depth, uint16_t output_maximum, float* normalized_stokes,
    uint16_t* total_power, uint16_t* horizontal_vertical, uint16_t* diagonal, uint16_t* azimuth,
    uint16_t* degree_of_linear_polarization);

#ifdef __cplusplus
}
#endif

#endif
