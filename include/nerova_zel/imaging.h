/**
 * @file imaging.h
 * @brief What programs around the polarization processor need of frames: unpacking, images on several cores,
 * statistics, colour planes, colouring, simulation and calibration.
 *
 * Self-contained C99, with the header of the processor. The library nerova_zel_imaging lies beside
 * nerova_zel_polarization_processor and is linked with it. Bindings are made on this interface.
 *
 * Images are row-major and tightly packed: pixel (x, y), column x from the left and row y from the top, is element
 * y * width + x. All buffers, strings and structures belong to the caller unless a function says otherwise; none is
 * kept beyond the call. Buffers need the alignment of their element type and must not overlap one another unless said.
 *
 * Errors: every function but nv_imaging_error_text and those that only destroy returns an int32_t: 0, or a code of
 * nv_imaging_error; 1 to 13 are those of nv_polarization_processor_error. After an error, results are not written
 * unless said otherwise. Nothing is thrown, and no state is left that makes a later call fail.
 *
 * Threads: all functions may be called from any threads at the same time, also with the same handle, unless said
 * otherwise. Threads that a function starts end before it returns, so that a process may fork at any other time.
 */
#ifndef NEROVA_ZEL_IMAGING_H
#define NEROVA_ZEL_IMAGING_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C callers have no <cstddef> */
#include <stdint.h> /* NOLINT(modernize-deprecated-headers) */

#include "nerova_zel/polarization_processor.h"

#define NV_IMAGING_CALL NV_POLARIZATION_PROCESSOR_CALL

#if defined(NV_IMAGING_BUILDING) && !defined(_WIN32)
#define NV_IMAGING_API __attribute__((visibility("default")))
#elif defined(_WIN32) && !defined(NV_IMAGING_BUILDING)
#define NV_IMAGING_API __declspec(dllimport)
#else
#define NV_IMAGING_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* C has no using, and its names are not those of C++. NOLINTBEGIN(modernize-use-using,readability-identifier-naming) */

enum nv_imaging_error {
  NV_IMAGING_SUCCESS = 0,
  /* 1 to 13: nv_polarization_processor_error. */
  /** A NULL that is not allowed, a number out of its range, or an unknown name. */
  NV_IMAGING_ERROR_ARGUMENT = 101,
  /** What frames or a text hold cannot be used. */
  NV_IMAGING_ERROR_DATA = 102,
  NV_IMAGING_ERROR_OUT_OF_MEMORY = 103,
  NV_IMAGING_ERROR_UNKNOWN = 104
};

/**
 * What was wrong in the last call of this thread that returned an error: a sentence in UTF-8, without a full stop at
 * its end, never NULL. Valid until the thread's next call of a function of this header, or its end.
 */
NV_IMAGING_API const char* NV_IMAGING_CALL nv_imaging_error_text(void);

/* Frames --------------------------------------------------------------------------------------------------------- */

/** One raw mosaic frame, as the processor takes it. */
typedef struct nv_imaging_frame {
  const uint16_t* pixels; /**< width * height; not NULL */
  int32_t width;          /**< columns, at least 2 */
  int32_t height;         /**< rows, at least 2 */
  int32_t origin_x;       /**< sensor column of the top-left pixel, at least 0; only its parity matters */
  int32_t origin_y;       /**< sensor row of it */
  int32_t layout;         /**< polarizer at even sensor coordinates: 0, 45, 90 or 135 degrees */
  int32_t bit_depth;      /**< significant bits of a pixel, 1 to 16 */
} nv_imaging_frame;

/**
 * What pixel formats there are: the names of the pixel format naming convention (PFNC) of machine vision, such as Mono8
 * or Mono12p, and those of colour polarization cameras.
 *
 * @param index 0 for the first one, and so on.
 * @param name receives the name, static text; NULL where there are no more. Not NULL.
 * @return 0; 101 (a NULL, or a negative index).
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_pixel_format_name(int32_t index, const char** name);

/**
 * Describes a pixel format.
 *
 * @param name as above, zero-terminated.
 * @param significant_bits receives the bit depth, 8 to 16; NULL if not wanted.
 * @param storage_bits receives the bits that a pixel takes; NULL if not wanted.
 * @return 0; 101 (NULL or unknown name).
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_pixel_format(const char* name, int32_t* significant_bits,
                                                               int32_t* storage_bits);

/**
 * Unpacks frames that follow one another without padding; each starts at a byte boundary.
 *
 * @param format the pixel format's name.
 * @param bytes frames * ((pixels * storage bits + 7) / 8) bytes, of any alignment.
 * @param byte_count how many bytes there are; more than are needed is an error, as is less.
 * @param pixels of one frame, at least 1.
 * @param frames at least 1.
 * @param unpacked room for frames * pixels elements.
 * @param threads at most so many threads unpack, 1 or more.
 * @return 0; 101 (NULL, unknown format, a number below its least, another number of bytes); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_unpack(const char* format, const void* bytes, size_t byte_count,
                                                         size_t pixels, size_t frames, uint16_t* unpacked,
                                                         int32_t threads);

/**
 * Takes a colour frame apart into four ordinary mosaics, whose layout is the frame's.
 *
 * @param pixels width * height pixels.
 * @param width,height of the frame, multiples of 4: then each plane has half the width and half the height.
 * @param pattern the colours of the 2 x 2 pixel cells at the frame's (0, 0), (2, 0), (0, 2) and (2, 2): "RGGB", "GRBG",
 *        "GBRG" or "BGGR".
 * @param planes room for width * height pixels: the planes of red, of green in the rows of red, of green in the rows of
 *        blue, and of blue, one after another.
 * @return 0; 101.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_split_colours(const uint16_t* pixels, int32_t width, int32_t height,
                                                                const char* pattern, uint16_t* planes);

/** What a file of raw frames without gaps holds, as the JSON beside it says; docs/cameras.md lists its members. */
typedef struct nv_imaging_recording {
  uint64_t frames;
  int32_t width;
  int32_t height;
  int32_t origin_x; /**< sensor column of the top-left pixel */
  int32_t origin_y;
  int32_t layout;           /**< polarizer at even sensor coordinates: 0, 45, 90 or 135 degrees */
  int32_t bit_depth;        /**< of the pixel format */
  const char* pixel_format; /**< as nv_imaging_unpack takes it; static text */
  const char* colour;       /**< pattern of a sensor with colour filters, such as "RGGB", static text; NULL of others */
} nv_imaging_recording;

/**
 * Reads the text of such a description, NAME.raw.json of NAME.raw.
 *
 * @param text `length` bytes of UTF-8; not NULL.
 * @param name what errors call the file.
 * @param recording not NULL.
 * @return 0; 101; 102 (not such a text); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_read_recording(const char* text, size_t length, const char* name,
                                                                 nv_imaging_recording* recording);

/* Images ---------------------------------------------------------------------------------------------------------- */

/**
 * Where the images of a frame go, width * height elements each (stokes: twice as many); NULL where one is not wanted.
 * The first six and the output maximum are those of nv_polarization_processor_transform.
 */
typedef struct nv_imaging_images {
  float* stokes;
  uint16_t* power;
  uint16_t* hv;
  uint16_t* diagonal;
  uint16_t* azimuth;
  uint16_t* dolp;
  float* s0;              /**< P in pixel values, not clipped, by the per-pixel rules on every route */
  float* s1;              /**< S1 likewise */
  float* s2;              /**< S2 likewise */
  float* angle;           /**< of linear polarization, degrees, at least 0 and below 180; NaN where P is 0 */
  int32_t output_maximum; /**< 1 to 65535 */
} nv_imaging_images;

/**
 * Computes images of one frame on several threads. Their number does not change a bit of the result.
 *
 * @param processor from the processor's create; nobody changes its matrices meanwhile.
 * @param frame,images not NULL; at least one image is wanted.
 * @param threads at most so many threads compute the frame, 1 or more. Small frames take fewer.
 * @return 0; a code of nv_polarization_processor_error; 101; 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_transform(nv_polarization_processor* processor,
                                                            const nv_imaging_frame* frame,
                                                            const nv_imaging_images* images, int32_t threads);

/**
 * What computes frames on this computer: "avx512", "avx2", "built-in SSE4.1" or "built-in SSE2". Found by a trial with
 * a processor of its own, which takes about 0.1 ms.
 *
 * @param name receives static text; not NULL.
 * @return 0; 1 or 3 as the processor's create; 101.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_route(const char** name);

/* Statistics ------------------------------------------------------------------------------------------------------ */

enum nv_imaging_weight {
  NV_IMAGING_WEIGHT_EQUAL = 0, /**< every pixel counts once */
  NV_IMAGING_WEIGHT_POWER = 1  /**< the degree by power, the angle by polarized power */
};

/** Statistics of pixels; docs/statistics.md has the formulas. Values that do not exist are NaN. */
typedef struct nv_imaging_statistics {
  uint64_t pixels;
  uint64_t without_angle;  /**< pixels without polarized light */
  uint64_t without_degree; /**< pixels without light */
  /** Pixels at the end of the scale or above, and at 0: of the frame, power, hv, diagonal and dolp. */
  uint64_t saturated[5];
  uint64_t dark[5];
  double mean_angle;      /**< axial mean, degrees, above -90 to 90 */
  double resultant;       /**< mean resultant length of the doubled angles, 0 to 1 */
  double angle_deviation; /**< circular standard deviation, degrees */
  double mean_degree;     /**< 0 to 1 */
  /** The sums that the means are made of, for nv_imaging_add_statistics. */
  double cosines;
  double sines;
  double angle_weights;
  double degrees;
  double degree_weights;
} nv_imaging_statistics;

/**
 * Statistics of one frame. Their bits depend on neither the threads nor the number of frames at a time.
 *
 * @param processor,frame as for nv_imaging_transform.
 * @param region x, y, width, height of the part to take, as if the camera had read out no more; NULL for all.
 * @param weight one of nv_imaging_weight.
 * @param threads 1 or more.
 * @param statistics not NULL.
 * @return 0; a code of nv_polarization_processor_error; 101 (a region beyond the frame too); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_compute_statistics(nv_polarization_processor* processor,
                                                                     const nv_imaging_frame* frame,
                                                                     const int32_t region[4], int32_t weight,
                                                                     int32_t threads,
                                                                     nv_imaging_statistics* statistics);

/**
 * Adds the pixels of `more` to `statistics`; both are of one weight. A structure of zeros stands for no pixels.
 *
 * @return 0; 101 (a NULL).
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_add_statistics(nv_imaging_statistics* statistics,
                                                                 const nv_imaging_statistics* more);

/* Colours --------------------------------------------------------------------------------------------------------- */

/** Tables that colour azimuth, degree and power. Opaque. */
typedef struct nv_imaging_colours nv_imaging_colours;

/**
 * Makes the tables of a style, at most 0.4 MB.
 *
 * @param style "plain", "light", "dark" or "composite"; docs/pictures.md defines them.
 * @param output_maximum of the images, 1 to 65535.
 * @param degree_end,power_end where the scales of degree and power end, above 0; 1 is a degree of 1 and full scale.
 * @param colours receives the tables, released by nv_imaging_destroy_colours; not NULL.
 * @return 0; 101; 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_create_colours(const char* style, int32_t output_maximum,
                                                                 double degree_end, double power_end,
                                                                 nv_imaging_colours** colours);

/** NULL is allowed. Not while another call uses them. */
NV_IMAGING_API void NV_IMAGING_CALL nv_imaging_destroy_colours(nv_imaging_colours* colours);

/**
 * Colours pixels.
 *
 * @param colours not NULL.
 * @param azimuth,dolp,power `pixels` values each; dolp may be NULL in the style plain, power but in composite.
 * @param rgb room for 3 * pixels bytes: red, green, blue of each pixel.
 * @return 0; 101.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_paint(const nv_imaging_colours* colours, const uint16_t* azimuth,
                                                        const uint16_t* dolp, const uint16_t* power, size_t pixels,
                                                        uint8_t* rgb);

/**
 * The azimuth image that angles stand for: (angle + 90) modulo 180 degrees times output_maximum / 180, rounded. NaN
 * becomes 0.
 *
 * @param angle `pixels` degrees.
 * @param output_maximum 1 to 65535.
 * @param azimuth room for `pixels` values.
 * @return 0; 101.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_azimuth_of_angles(const float* angle, size_t pixels,
                                                                    int32_t output_maximum, uint16_t* azimuth);

/* Simulation ------------------------------------------------------------------------------------------------------ */

/** A camera, and what it sees: a glossy sphere and a wheel of polarizers, or the same light everywhere. */
typedef struct nv_imaging_scene {
  int32_t width; /**< at least 2, as is the height */
  int32_t height;
  int32_t origin_x; /**< at least 0 */
  int32_t origin_y;
  int32_t layout;         /**< 0, 45, 90 or 135 */
  int32_t bit_depth;      /**< 1 to 16 */
  int32_t uniform;        /**< not 0: the same light everywhere, with the next three members */
  int32_t reserved;       /**< 0 */
  double light[3];        /**< s0, s1, s2; s0 = 1 without a polarizer fills a pixel */
  double photons;         /**< photo-electrons that fill a pixel, for shot noise, at most 1e12; 0 for none */
  double dark_level;      /**< pixel value without light, at least 0 and below 2^bit_depth */
  double angle_errors[4]; /**< degrees by which the polarizers 0, 45, 90, 135 are turned */
  double extinctions[4];  /**< their extinction ratios, at least 1; may be infinite */
  double gains[4];        /**< relative response of the pixels below them, above 0 */
  uint64_t seed;          /**< of the noise: the same settings give the same frame */
} nv_imaging_scene;

/**
 * Simulates a frame and the true light of each output pixel, at the centre of the 2 x 2 pixels that it is computed
 * from.
 *
 * @param scene not NULL.
 * @param pixels room for width * height pixels; NULL if not wanted.
 * @param s0,s1,s2 room for width * height floats each, the linear Stokes parameters as in `light`; all NULL if not
 * wanted.
 * @return 0; 101; 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_simulate(const nv_imaging_scene* scene, uint16_t* pixels, float* s0,
                                                           float* s1, float* s2);

/* Calibration ----------------------------------------------------------------------------------------------------- */

/** Frames of a uniform source behind a linear polarizer. Opaque. */
typedef struct nv_imaging_series nv_imaging_series;

/** Matrices and dark levels of a camera, with the text of their file. Opaque; never changes. */
typedef struct nv_imaging_calibration nv_imaging_calibration;

/**
 * @param series receives an empty series, released by nv_imaging_destroy_series; not NULL.
 * @param layout,origin_x,origin_y of all frames, as in nv_imaging_frame.
 * @return 0; 101; 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_create_series(int32_t layout, int32_t origin_x, int32_t origin_y,
                                                                nv_imaging_series** series);

/** NULL is allowed. Not while another call uses it. */
NV_IMAGING_API void NV_IMAGING_CALL nv_imaging_destroy_series(nv_imaging_series* series);

/**
 * Adds a frame, of which only means are kept. Layout and origin are the series'; those of `frame` are not read.
 *
 * @param series not NULL, used by no other call at the time.
 * @param name what errors call the frame, UTF-8.
 * @param angle of the source's polarizer, degrees from the image's horizontal axis, counter-clockwise.
 * @param frame at least as large and as deep as the first one.
 * @return 0; 101; 102 (another size or depth than the first, or values beyond the bit depth); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_add_to_series(nv_imaging_series* series, const char* name,
                                                                double angle, const nv_imaging_frame* frame);

/** The frame without light, after all others; as above, and 102 where a frame is darker than it. */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_set_dark_frame(nv_imaging_series* series, const char* name,
                                                                 const nv_imaging_frame* frame);

/**
 * Finds the matrices.
 *
 * @param series at least four frames at different angles; used by no other call at the time.
 * @param steady not 0: the source is known to be equally bright in all frames.
 * @param calibration receives the result, released by nv_imaging_destroy_calibration; not NULL.
 * @return 0; 101; 102 (overexposed, dark or uneven frames; angles that do not suffice or contradict the layout); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_fit(nv_imaging_series* series, int32_t steady,
                                                      nv_imaging_calibration** calibration);

/** NULL is allowed. Not while another call uses it. */
NV_IMAGING_API void NV_IMAGING_CALL nv_imaging_destroy_calibration(nv_imaging_calibration* calibration);

/**
 * Reads the text of a calibration file, which docs/calibration.md describes.
 *
 * @param text `length` bytes of UTF-8; not NULL.
 * @param name what errors call the file.
 * @param calibration receives the result, released as above; not NULL.
 * @return 0; 101; 102 (not such a text); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_read_calibration(const char* text, size_t length, const char* name,
                                                                   nv_imaging_calibration** calibration);

/**
 * Reads the text of a colour camera's calibration file, which has a calibration for each colour.
 *
 * @param text,length,name as above.
 * @param calibrations receives four, in the order of nv_imaging_split_colours, each released as above; not NULL.
 * @return 0; 101; 102 (not such a text); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_read_colour_calibration(const char* text, size_t length,
                                                                          const char* name,
                                                                          nv_imaging_calibration** calibrations);

/**
 * The text of the calibration's file: that which was read, or that of the fit with its report. Empty for one colour of
 * a colour camera.
 *
 * @param text receives UTF-8, zero-terminated, owned by the calibration and valid as long as it.
 * @param length receives its bytes without the zero; NULL if not wanted.
 * @return 0; 101.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_calibration_text(const nv_imaging_calibration* calibration,
                                                                   const char** text, size_t* length);

/** What a calibration found of one polarizer. */
typedef struct nv_imaging_polarizer {
  double angle_error;         /**< degrees by which it is turned, counter-clockwise */
  double angle_uncertainty;   /**< standard error, degrees */
  double extinction;          /**< ratio of greatest to least response to polarized light */
  double extinction_is_bound; /**< 1: the ratio is at least that; else 0 */
  double gain;                /**< response to unpolarized light, relative to the mean of the four */
  double residual;            /**< root mean square, as a share of the source */
} nv_imaging_polarizer;

/**
 * The numbers of a calibration.
 *
 * @param matrices room for 64 floats: four matrices as the processor takes them; NULL if not wanted.
 * @param dark_levels room for 4 pixel values without light under the polarizers 0, 45, 90, 135; NULL if not wanted.
 * @param bit_depth receives the depth of the frames it was made from, 0 if its file does not say; NULL if not wanted.
 * @param polarizers room for 4; NULL if not wanted. Only a calibration that was fitted has them.
 * @param frames receives the number of frames that were fitted, 0 for a calibration that was read; NULL if not wanted.
 * @return 0; 101 (a NULL calibration, or polarizers of one that was read).
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_calibration_values(const nv_imaging_calibration* calibration,
                                                                     float* matrices, double* dark_levels,
                                                                     int32_t* bit_depth,
                                                                     nv_imaging_polarizer* polarizers, size_t* frames);

/**
 * Measured less fitted signal, as a share of the source.
 *
 * @param residuals room for 4 * frames values: of each frame those under the polarizers 0, 45, 90, 135.
 * @param warnings receives one line for each frame that departs from what is expected, zero-terminated, owned by the
 *        calibration; NULL if not wanted.
 * @return 0; 101 (a NULL, or a calibration that was read).
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_calibration_residuals(const nv_imaging_calibration* calibration,
                                                                        double* residuals, const char** warnings);

/**
 * Subtracts the dark levels of a calibration from a frame, rounded and not below 0. This is what a frame goes through
 * before it is transformed by the matrices.
 *
 * @param result room for width * height pixels; may be the frame's own.
 * @return 0; 101; 102 (a calibration from frames of another bit depth); 103.
 */
NV_IMAGING_API int32_t NV_IMAGING_CALL nv_imaging_subtract_dark(const nv_imaging_calibration* calibration,
                                                                const nv_imaging_frame* frame, uint16_t* result);

/* NOLINTEND(modernize-use-using,readability-identifier-naming) */

#ifdef __cplusplus
}
#endif

#endif
