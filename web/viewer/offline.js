// Keeps the page for when there is no network, where a browser can.

export async function keepOffline() {
    if (!('serviceWorker' in navigator) || !isSecureContext) return;
    await navigator.serviceWorker.register('sw.js').catch(() => {});
}
