using System;
using System.Runtime.InteropServices;

namespace NerovaZel
{
    // What the libraries gave out. A handle in use by a call is released after it; one that was forgotten, by the finalizer.
    internal abstract class LibraryHandle : SafeHandle
    {
        protected LibraryHandle()
            : base(IntPtr.Zero, true)
        {
        }

        public override bool IsInvalid
        {
            get { return handle == IntPtr.Zero; }
        }
    }

    // Each processor holds a count of the module of its own, so that no order of release matters.
    internal sealed class ProcessorHandle : LibraryHandle
    {
        internal static ProcessorHandle Create()
        {
            Failure.ThrowIfProcessorFailed(NativeMethods.nv_polarization_processor_module_initialize());
            ProcessorHandle created = null;
            try
            {
                Failure.ThrowIfProcessorFailed(
                    NativeMethods.nv_polarization_processor_create_polarization_processor(out created));
                return created;
            }
            catch
            {
                if (created == null || created.IsInvalid)
                {
                    NativeMethods.nv_polarization_processor_module_terminate();
                }

                throw;
            }
        }

        protected override bool ReleaseHandle()
        {
            int code = NativeMethods.nv_polarization_processor_destroy_polarization_processor(handle);
            NativeMethods.nv_polarization_processor_module_terminate();
            return code == 0;
        }
    }

    internal sealed class ColoursHandle : LibraryHandle
    {
        protected override bool ReleaseHandle()
        {
            NativeMethods.nv_imaging_destroy_colours(handle);
            return true;
        }
    }

    internal sealed class SeriesHandle : LibraryHandle
    {
        protected override bool ReleaseHandle()
        {
            NativeMethods.nv_imaging_destroy_series(handle);
            return true;
        }
    }

    internal sealed class CalibrationHandle : LibraryHandle
    {
        // For the marshaller.
        public CalibrationHandle()
        {
        }

        internal CalibrationHandle(IntPtr calibration)
        {
            SetHandle(calibration);
        }

        protected override bool ReleaseHandle()
        {
            NativeMethods.nv_imaging_destroy_calibration(handle);
            return true;
        }
    }
}
