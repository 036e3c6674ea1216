using System;
using System.Collections.Generic;
using System.IO;
using System.Text;

namespace NerovaZel
{
    /// <summary>What a calibration found of the polarizers of one orientation.</summary>
    public sealed class PolarizerFit
    {
        internal PolarizerFit(NativePolarizer native)
        {
            AngleError = native.AngleError;
            AngleUncertainty = native.AngleUncertainty;
            Extinction = native.Extinction;
            ExtinctionIsBound = native.ExtinctionIsBound != 0;
            Gain = native.Gain;
            Residual = native.Residual;
        }

        /// <summary>Degrees by which they are turned, counter-clockwise.</summary>
        public double AngleError { get; }

        /// <summary>Its standard error in degrees.</summary>
        public double AngleUncertainty { get; }

        /// <summary>Ratio of the greatest to the least response to polarized light.</summary>
        public double Extinction { get; }

        /// <summary>Whether the ratio is only known to be at least that.</summary>
        public bool ExtinctionIsBound { get; }

        /// <summary>Response to unpolarized light, relative to the mean of the four orientations.</summary>
        public double Gain { get; }

        /// <summary>Root mean square of measured less fitted signal, as a share of the source.</summary>
        public double Residual { get; }
    }

    /// <summary>Matrices and dark levels of a camera, from <see cref="CalibrationSeries"/> or a file of the tool. Never
    /// changes.</summary>
    public sealed unsafe class Calibration : IDisposable
    {
        private readonly CalibrationHandle handle;
        private readonly float[] matrices = new float[64];
        private readonly double[] darkLevels = new double[4];

        internal Calibration(CalibrationHandle handle)
        {
            this.handle = handle;
            IntPtr text;
            UIntPtr length;
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_calibration_text(handle, out text, out length));
            Text = Utf8.Text(text);

            UIntPtr frames;
            int depth;
            fixed (float* toMatrices = matrices)
            fixed (double* toDark = darkLevels)
            {
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_calibration_values(
                    handle, toMatrices, toDark, &depth, null, &frames));
            }

            BitDepth = depth;
            Polarizers = new PolarizerFit[0];
            Residuals = new double[(int)frames, 4];
            Warnings = new string[0];
            if (frames != UIntPtr.Zero)
            {
                TakeFit();
            }

            GC.KeepAlive(handle);
        }

        /// <summary>The text of its file: JSON. Empty for one colour of a colour camera.</summary>
        public string Text { get; }

        /// <summary>A copy of the matrices of the polarizers 0, 45, 90, 135: 64 elements, 4 x 4 each by rows.</summary>
        public float[] Matrices
        {
            get { return (float[])matrices.Clone(); }
        }

        /// <summary>A copy of the four pixel values without light, under the polarizers 0, 45, 90, 135.</summary>
        public double[] DarkLevels
        {
            get { return (double[])darkLevels.Clone(); }
        }

        /// <summary>Of the frames that it was made from; no others may be corrected by it. 0 where its file does not say.</summary>
        public int BitDepth { get; }

        /// <summary>What was found of the polarizers 0, 45, 90, 135; empty where the calibration was read.</summary>
        public IReadOnlyList<PolarizerFit> Polarizers { get; private set; }

        /// <summary>[frame, polarizer]: measured less fitted signal as a share of the source; without rows where the
        /// calibration was read.</summary>
        public double[,] Residuals { get; private set; }

        /// <summary>A sentence for each frame whose light is uneven or that departs from the fit.</summary>
        public IReadOnlyList<string> Warnings { get; private set; }

        /// <summary>Reads the text of a calibration file.</summary>
        /// <param name="text">JSON.</param>
        /// <param name="name">What errors call it.</param>
        /// <exception cref="PolarizationException">It is no such text.</exception>
        public static Calibration Read(string text, string name = "the calibration")
        {
            Check.NotNull(text, nameof(text));
            return Read(Encoding.UTF8.GetBytes(text), name);
        }

        /// <summary>Reads a file of <see cref="Save"/> or of nerova-polarize calibrate.</summary>
        /// <param name="path">Of the file.</param>
        /// <exception cref="PolarizationException">It is no calibration file.</exception>
        public static Calibration Load(string path)
        {
            return Read(File.ReadAllBytes(path), path);
        }

        /// <summary>Reads a file of nerova-polarize calibrate --colour: a calibration for each plane of
        /// <see cref="RawFrames.SplitColours(ushort[], int, int, string)"/>, in their order. They cannot be saved.</summary>
        /// <param name="path">Of the file.</param>
        /// <exception cref="PolarizationException">It is no calibration file of a colour camera.</exception>
        public static Calibration[] LoadColours(string path)
        {
            byte[] text = File.ReadAllBytes(path);
            var found = new IntPtr[4];
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_read_colour_calibration(
                text, RawFrames.Size(text.LongLength), Utf8.Bytes(path, nameof(path)), found));
            CalibrationHandle[] handles = Array.ConvertAll(found, calibration => new CalibrationHandle(calibration));
            return Array.ConvertAll(handles, handle => new Calibration(handle));
        }

        /// <summary>Writes the calibration as JSON, which the tool reads too. A file that is there is replaced; it is whole at
        /// any time.</summary>
        /// <param name="path">Of the file.</param>
        /// <exception cref="InvalidOperationException">It is that of one colour.</exception>
        public void Save(string path)
        {
            if (Text.Length == 0)
            {
                throw new InvalidOperationException("The calibration of one colour has no file of its own.");
            }

            string target = Path.GetFullPath(path);
            string partial = target + "." + Path.GetRandomFileName();
            try
            {
                File.WriteAllText(partial, Text, new UTF8Encoding(false));
                if (File.Exists(target))
                {
                    File.Replace(partial, target, null);
                }
                else
                {
                    File.Move(partial, target);
                }
            }
            catch
            {
                File.Delete(partial);
                throw;
            }
        }

        /// <summary>The frame less the dark levels, rounded and not below 0. <see cref="Processor"/> does it by itself.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <exception cref="PolarizationException">The bit depth is not that of the calibration.</exception>
        public ushort[] SubtractDark(FrameFormat format, ushort[] pixels)
        {
            Check.NotNull(format, nameof(format));
            Check.Size(pixels, format.PixelCount, nameof(pixels));
            var result = new ushort[pixels.LongLength];
            fixed (ushort* from = pixels, to = result)
            {
                NativeFrame frame = format.Native(from);
                SubtractDark(&frame, to);
            }

            return result;
        }

        /// <summary>Releases the calibration.</summary>
        public void Dispose()
        {
            handle.Dispose();
        }

        internal void SubtractDark(NativeFrame* frame, ushort* result)
        {
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_subtract_dark(handle, frame, result));
        }

        private static Calibration Read(byte[] text, string name)
        {
            CalibrationHandle handle;
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_read_calibration(
                text, RawFrames.Size(text.LongLength), Utf8.Bytes(name, nameof(name)), out handle));
            return new Calibration(handle);
        }

        private void TakeFit()
        {
            var found = new NativePolarizer[4];
            fixed (NativePolarizer* to = found)
            {
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_calibration_values(handle, null, null, null, to, null));
            }

            Polarizers = Array.ConvertAll(found, native => new PolarizerFit(native));
            IntPtr warnings;
            fixed (double* to = Residuals)
            {
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_calibration_residuals(handle, to, out warnings));
            }

            Warnings = (Utf8.Text(warnings) ?? string.Empty).Split(
                new[] { '\n' }, StringSplitOptions.RemoveEmptyEntries);
        }
    }

    /// <summary>Finds the matrices of a camera from frames of a uniform, unpolarized source behind a linear polarizer. Used by
    /// one thread at a time.</summary>
    public sealed unsafe class CalibrationSeries : IDisposable
    {
        private readonly SeriesHandle handle;
        private readonly FrameFormat format;

        /// <summary>An empty series.</summary>
        /// <param name="format">Of all its frames.</param>
        public CalibrationSeries(FrameFormat format)
        {
            Check.NotNull(format, nameof(format));
            this.format = format;
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_create_series(
                format.Layout, format.OriginX, format.OriginY, out handle));
        }

        /// <summary>Adds a frame, of which only means are kept.</summary>
        /// <param name="name">What errors call the frame.</param>
        /// <param name="angle">Of the source's polarizer in degrees, counter-clockwise from the image's horizontal axis; at
        /// least four are needed, best every 15 degrees over half a turn.</param>
        /// <param name="pixels">Width times height.</param>
        /// <exception cref="PolarizationException">Values are beyond the bit depth.</exception>
        public void Add(string name, double angle, ushort[] pixels)
        {
            Check.Size(pixels, format.PixelCount, nameof(pixels));
            fixed (ushort* first = pixels)
            {
                Add(name, angle, (IntPtr)first);
            }
        }

        /// <summary>As above, a frame at an address.</summary>
        /// <param name="name">What errors call the frame.</param>
        /// <param name="angle">Of the source's polarizer.</param>
        /// <param name="pixels">Address of width times height pixels of 16 bits, aligned to 2 bytes.</param>
        public void Add(string name, double angle, IntPtr pixels)
        {
            NativeFrame frame = format.Native((ushort*)pixels);
            Failure.ThrowIfFailed(
                NativeMethods.nv_imaging_add_to_series(handle, Utf8.Bytes(name, nameof(name)), angle, &frame));
        }

        /// <summary>Sets the frame without light, after all others. Without it a dark level is taken for leakage of the
        /// polarizers.</summary>
        /// <param name="name">What errors call the frame.</param>
        /// <param name="pixels">Width times height.</param>
        /// <exception cref="PolarizationException">Another frame is darker.</exception>
        public void SetDark(string name, ushort[] pixels)
        {
            Check.Size(pixels, format.PixelCount, nameof(pixels));
            fixed (ushort* first = pixels)
            {
                SetDark(name, (IntPtr)first);
            }
        }

        /// <summary>As above, a frame at an address.</summary>
        /// <param name="name">What errors call the frame.</param>
        /// <param name="pixels">Address of width times height pixels of 16 bits, aligned to 2 bytes.</param>
        public void SetDark(string name, IntPtr pixels)
        {
            NativeFrame frame = format.Native((ushort*)pixels);
            Failure.ThrowIfFailed(
                NativeMethods.nv_imaging_set_dark_frame(handle, Utf8.Bytes(name, nameof(name)), &frame));
        }

        /// <summary>Finds the matrices.</summary>
        /// <param name="steady">Whether the source is known to be equally bright in all frames.</param>
        /// <exception cref="PolarizationException">Frames are overexposed, dark or uneven, or the angles do not suffice or
        /// contradict the layout.</exception>
        public Calibration Fit(bool steady = false)
        {
            CalibrationHandle calibration;
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_fit(handle, steady ? 1 : 0, out calibration));
            return new Calibration(calibration);
        }

        /// <summary>Releases the series.</summary>
        public void Dispose()
        {
            handle.Dispose();
        }
    }
}
