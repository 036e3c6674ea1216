using System;
using System.Runtime.InteropServices;

namespace NerovaZel
{
    // The structures of imaging.h. Their members have the same places in 32 and 64 bits, on Windows and Linux.
    internal unsafe struct NativeFrame
    {
        public ushort* Pixels;
        public int Width;
        public int Height;
        public int OriginX;
        public int OriginY;
        public int Layout;
        public int BitDepth;
    }

    internal struct NativeRecording
    {
        public ulong Frames;
        public int Width;
        public int Height;
        public int OriginX;
        public int OriginY;
        public int Layout;
        public int BitDepth;
        public IntPtr PixelFormat;
        public IntPtr Colour;
    }

    internal unsafe struct NativeImages
    {
        public float* Stokes;
        public ushort* Power;
        public ushort* HorizontalVertical;
        public ushort* Diagonal;
        public ushort* Azimuth;
        public ushort* Degree;
        public float* S0;
        public float* S1;
        public float* S2;
        public float* Angle;
        public int OutputMaximum;
    }

    internal unsafe struct NativeStatistics
    {
        public ulong Pixels;
        public ulong WithoutAngle;
        public ulong WithoutDegree;
        public fixed ulong Saturated[5];
        public fixed ulong Dark[5];
        public double MeanAngle;
        public double Resultant;
        public double AngleDeviation;
        public double MeanDegree;
        public double Cosines;
        public double Sines;
        public double AngleWeights;
        public double Degrees;
        public double DegreeWeights;
    }

    internal unsafe struct NativeScene
    {
        public int Width;
        public int Height;
        public int OriginX;
        public int OriginY;
        public int Layout;
        public int BitDepth;
        public int Uniform;
        public int Reserved;
        public fixed double Light[3];
        public double Photons;
        public double DarkLevel;
        public fixed double AngleErrors[4];
        public fixed double Extinctions[4];
        public fixed double Gains[4];
        public ulong Seed;
    }

    internal struct NativePolarizer
    {
        public double AngleError;
        public double AngleUncertainty;
        public double Extinction;
        public double ExtinctionIsBound;
        public double Gain;
        public double Residual;
    }

    // polarization_processor.h and imaging.h, function by function. Texts are UTF-8 and end with a zero.
    internal static unsafe class NativeMethods
    {
        private const string Processor = "nerova_zel_polarization_processor";
        private const string Imaging = "nerova_zel_imaging";
        private const CallingConvention Cdecl = CallingConvention.Cdecl;

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_module_initialize();

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_module_terminate();

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_create_polarization_processor(out ProcessorHandle processor);

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_destroy_polarization_processor(IntPtr processor);

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_set_custom_calibration_coefficients(
            ProcessorHandle processor, float* matrix0, float* matrix1, float* matrix2, float* matrix3);

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_get_custom_calibration_coefficients(
            ProcessorHandle processor, float* matrix0, float* matrix1, float* matrix2, float* matrix3);

        [DllImport(Processor, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_polarization_processor_transform(
            ProcessorHandle processor, int phase, ushort* input, int originX, int originY, int width, int height,
            int bitDepth, ushort outputMaximum, float* normalizedStokes, ushort* totalPower, ushort* horizontalVertical,
            ushort* diagonal, ushort* azimuth, ushort* degree);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern IntPtr nv_imaging_error_text();

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_pixel_format_name(int index, out IntPtr name);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_pixel_format(byte[] name, out int significantBits, out int storageBits);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_unpack(
            byte[] format, void* bytes, UIntPtr byteCount, UIntPtr pixels, UIntPtr frames, ushort* unpacked, int threads);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_split_colours(
            ushort* pixels, int width, int height, byte[] pattern, ushort* planes);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_read_recording(
            byte[] text, UIntPtr length, byte[] name, out NativeRecording recording);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_transform(
            ProcessorHandle processor, NativeFrame* frame, NativeImages* images, int threads);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_route(out IntPtr name);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_compute_statistics(
            ProcessorHandle processor, NativeFrame* frame, int* region, int weight, int threads,
            NativeStatistics* statistics);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_add_statistics(NativeStatistics* statistics, NativeStatistics* more);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_create_colours(
            byte[] style, int outputMaximum, double degreeEnd, double powerEnd, out ColoursHandle colours);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern void nv_imaging_destroy_colours(IntPtr colours);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_paint(
            ColoursHandle colours, ushort* azimuth, ushort* degree, ushort* power, UIntPtr pixels, byte* rgb);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_azimuth_of_angles(
            float* angle, UIntPtr pixels, int outputMaximum, ushort* azimuth);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_simulate(
            NativeScene* scene, ushort* pixels, float* s0, float* s1, float* s2);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_create_series(
            int layout, int originX, int originY, out SeriesHandle series);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern void nv_imaging_destroy_series(IntPtr series);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_add_to_series(
            SeriesHandle series, byte[] name, double angle, NativeFrame* frame);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_set_dark_frame(SeriesHandle series, byte[] name, NativeFrame* frame);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_fit(SeriesHandle series, int steady, out CalibrationHandle calibration);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern void nv_imaging_destroy_calibration(IntPtr calibration);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_read_calibration(
            byte[] text, UIntPtr length, byte[] name, out CalibrationHandle calibration);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_read_colour_calibration(
            byte[] text, UIntPtr length, byte[] name, [Out] IntPtr[] calibrations);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_calibration_text(
            CalibrationHandle calibration, out IntPtr text, out UIntPtr length);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_calibration_values(
            CalibrationHandle calibration, float* matrices, double* darkLevels, int* bitDepth,
            NativePolarizer* polarizers, UIntPtr* frames);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_calibration_residuals(
            CalibrationHandle calibration, double* residuals, out IntPtr warnings);

        [DllImport(Imaging, CallingConvention = Cdecl, ExactSpelling = true)]
        internal static extern int nv_imaging_subtract_dark(
            CalibrationHandle calibration, NativeFrame* frame, ushort* result);
    }
}
